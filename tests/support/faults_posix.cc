// Overrides of the system calls that the plugin uses, with the aliases under
// which a compiler or a C library may reach them.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>

#include "support/faults_intercept.h"

using corvane_test::Closed;
using corvane_test::Intercept;
using corvane_test::Next;
using corvane_test::OnDescriptor;
using corvane_test::OnPath;
using corvane_test::Opened;
using corvane_test::PluginCall;
using corvane_test::Watched;

namespace {

using Open = int (*)(const char*, int, ...);

int InterceptOpen(Open real, const char* path, int flags, mode_t mode) {
  PluginCall call = OnPath("open", path);
  call.flags = flags;
  call.mode = mode;
  return Intercept<int>(&call, [&](PluginCall& made) {
    made.fd = real(path, flags, mode);
    if (made.fd >= 0) {
      Opened(made.fd, path);
    }
    return made.fd;
  });
}

// Reads the mode only where the flags say that there is one.
mode_t ModeOf(int flags, va_list arguments) {
  const bool creates = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) != 0;
  return creates ? va_arg(arguments, mode_t) : 0;
}

using Pread = ssize_t (*)(int, void*, size_t, off_t);

ssize_t InterceptPread(Pread real, int fd, void* data, size_t size,
                       off_t offset) {
  PluginCall call = OnDescriptor("pread", fd, static_cast<int64_t>(size));
  call.offset = offset;
  return Intercept<ssize_t>(&call, [&](PluginCall& made) {
    return real(fd, data, static_cast<size_t>(made.size), offset);
  });
}

using Truncate = int (*)(int, off_t);

int InterceptTruncate(Truncate real, int fd, off_t length) {
  PluginCall call = OnDescriptor("ftruncate", fd, length);
  return Intercept<int>(&call, [&](PluginCall&) { return real(fd, length); });
}

template <typename Stat, typename Fstat>
int InterceptFstat(Fstat real, int fd, Stat* status) {
  PluginCall call = OnDescriptor("fstat", fd);
  call.status = reinterpret_cast<struct stat*>(status);
  return Intercept<int>(&call, [&](PluginCall&) { return real(fd, status); });
}

template <typename Stat, typename Function>
int InterceptStat(Function real, const char* path, Stat* status) {
  PluginCall call = OnPath("stat", path);
  call.status = reinterpret_cast<struct stat*>(status);
  return Intercept<int>(&call, [&](PluginCall&) { return real(path, status); });
}

}  // namespace

#define CORVANE_WATCHED Watched(__builtin_return_address(0))

extern "C" {

#define CORVANE_OVERRIDE_OPEN(NAME)                                 \
  int NAME(const char* path, int flags, ...) {                      \
    static const auto real = Next<Open>(#NAME);                     \
    va_list arguments;                                              \
    va_start(arguments, flags);                                     \
    const mode_t mode = ModeOf(flags, arguments);                   \
    va_end(arguments);                                              \
    return CORVANE_WATCHED ? InterceptOpen(real, path, flags, mode) \
                           : real(path, flags, mode);               \
  }
CORVANE_OVERRIDE_OPEN(open)
CORVANE_OVERRIDE_OPEN(open64)

// The fortified forms take no mode.
#define CORVANE_OVERRIDE_CHECKED_OPEN(NAME, PLAIN)               \
  int NAME(const char* path, int flags) {                        \
    static const auto real = Next<Open>(#PLAIN);                 \
    return CORVANE_WATCHED ? InterceptOpen(real, path, flags, 0) \
                           : real(path, flags);                  \
  }
CORVANE_OVERRIDE_CHECKED_OPEN(__open_2, open)
CORVANE_OVERRIDE_CHECKED_OPEN(__open64_2, open64)

ssize_t write(int fd, const void* data, size_t size) {
  static const auto real = Next<ssize_t (*)(int, const void*, size_t)>("write");
  if (!CORVANE_WATCHED) {
    return real(fd, data, size);
  }
  PluginCall call = OnDescriptor("write", fd, static_cast<int64_t>(size));
  call.data = data;
  return Intercept<ssize_t>(&call, [&](PluginCall& made) {
    return real(fd, data, static_cast<size_t>(made.size));
  });
}

#define CORVANE_OVERRIDE_PREAD(NAME)                                      \
  ssize_t NAME(int fd, void* data, size_t size, off_t offset) {           \
    static const auto real = Next<Pread>(#NAME);                          \
    return CORVANE_WATCHED ? InterceptPread(real, fd, data, size, offset) \
                           : real(fd, data, size, offset);                \
  }
CORVANE_OVERRIDE_PREAD(pread)
CORVANE_OVERRIDE_PREAD(pread64)

#define CORVANE_OVERRIDE_CHECKED_PREAD(NAME, PLAIN)                       \
  ssize_t NAME(int fd, void* data, size_t size, off_t offset, size_t) {   \
    static const auto real = Next<Pread>(#PLAIN);                         \
    return CORVANE_WATCHED ? InterceptPread(real, fd, data, size, offset) \
                           : real(fd, data, size, offset);                \
  }
CORVANE_OVERRIDE_CHECKED_PREAD(__pread_chk, pread)
CORVANE_OVERRIDE_CHECKED_PREAD(__pread64_chk, pread64)

int fsync(int fd) {
  static const auto real = Next<int (*)(int)>("fsync");
  if (!CORVANE_WATCHED) {
    return real(fd);
  }
  PluginCall call = OnDescriptor("fsync", fd);
  return Intercept<int>(&call, [&](PluginCall&) { return real(fd); });
}

#define CORVANE_OVERRIDE_TRUNCATE(NAME)                          \
  int NAME(int fd, off_t length) noexcept {                      \
    static const auto real = Next<Truncate>(#NAME);              \
    return CORVANE_WATCHED ? InterceptTruncate(real, fd, length) \
                           : real(fd, length);                   \
  }
CORVANE_OVERRIDE_TRUNCATE(ftruncate)
CORVANE_OVERRIDE_TRUNCATE(ftruncate64)

#define CORVANE_OVERRIDE_STAT(NAME, KEY, STAT, INTERCEPT)                      \
  int NAME(KEY, struct STAT* status) noexcept {                                \
    static const auto real = Next<int (*)(KEY, struct STAT*)>(#NAME);          \
    return CORVANE_WATCHED ? INTERCEPT(real, key, status) : real(key, status); \
  }
CORVANE_OVERRIDE_STAT(fstat, int key, stat, InterceptFstat)
CORVANE_OVERRIDE_STAT(fstat64, int key, stat64, InterceptFstat)
CORVANE_OVERRIDE_STAT(stat, const char* key, stat, InterceptStat)
CORVANE_OVERRIDE_STAT(stat64, const char* key, stat64, InterceptStat)

int rename(const char* from, const char* to) noexcept {
  static const auto real = Next<int (*)(const char*, const char*)>("rename");
  if (!CORVANE_WATCHED) {
    return real(from, to);
  }
  PluginCall call = OnPath("rename", from);
  call.new_path = to;
  return Intercept<int>(&call, [&](PluginCall&) { return real(from, to); });
}

// A failed close has released its descriptor all the same, as Linux does it.
int close(int fd) {
  static const auto real = Next<int (*)(int)>("close");
  if (!CORVANE_WATCHED) {
    return real(fd);
  }
  PluginCall call = OnDescriptor("close", fd);
  call.releases = true;
  return Intercept<int>(&call, [&](PluginCall&) {
    Closed(fd);  // first: another thread may get the number at once
    return real(fd);
  });
}

char* getcwd(char* buffer, size_t size) noexcept {
  static const auto real = Next<char* (*)(char*, size_t)>("getcwd");
  if (!CORVANE_WATCHED) {
    return real(buffer, size);
  }
  PluginCall call;
  call.name = "getcwd";
  return Intercept<char*>(&call,
                          [&](PluginCall&) { return real(buffer, size); });
}

}  // extern "C"
