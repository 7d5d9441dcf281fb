// Preloaded into a recorder, it writes down what the program asks the system
// for, with the times, into the file that CORVANE_WITNESS names:
//
//   NAME BEGIN_NS END_NS AMOUNT
//
// a line each for
//
//   read    bytes that standard input gave
//   fsync   bytes that the file had when the call began
//
// if they succeeded. Reads of other descriptors and syncs of folders are left
// out.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "power/journal.h"

namespace corvane_test {
namespace {

// The next definition behind this one: the system's.
template <typename Function>
Function* system_call(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

class Notes {
 public:
  Notes() {
    const char* path = std::getenv("CORVANE_WITNESS");
    if (path == nullptr) return;
    fd_ = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (fd_ < 0) std::abort();
  }
  ~Notes() {
    if (fd_ >= 0) close(fd_);
  }
  Notes(const Notes&) = delete;
  Notes& operator=(const Notes&) = delete;

  // One write a line, so that threads don't get between each other's words.
  void Add(const char* name, uint64_t begin_ns, int64_t amount) const {
    if (fd_ < 0) return;
    char line[96];
    const int size = std::snprintf(line, sizeof(line),
                                   "%s %" PRIu64 " %" PRIu64 " %" PRId64 "\n",
                                   name, begin_ns, now_ns(), amount);
    if (write(fd_, line, static_cast<size_t>(size)) != size) std::abort();
  }

 private:
  int fd_ = -1;
};

const Notes& notes() {
  static const Notes notes;
  return notes;
}

// Below 0 for what is no ordinary file, as a folder.
int64_t size_of(int fd) {
  struct stat file = {};
  return fstat(fd, &file) == 0 && S_ISREG(file.st_mode) ? file.st_size : -1;
}

}  // namespace
}  // namespace corvane_test

using corvane_test::notes;
using corvane_test::now_ns;

extern "C" {

ssize_t read(int fd, void* out, size_t size) {
  static const auto call = corvane_test::system_call<decltype(read)>("read");
  const uint64_t begin_ns = now_ns();
  const ssize_t got = call(fd, out, size);
  const int errnum = errno;
  if (fd == STDIN_FILENO && got >= 0) notes().Add("read", begin_ns, got);
  errno = errnum;
  return got;
}

int fsync(int fd) {
  static const auto call = corvane_test::system_call<decltype(fsync)>("fsync");
  const int64_t size = corvane_test::size_of(fd);
  const uint64_t begin_ns = now_ns();
  const int result = call(fd);
  const int errnum = errno;
  if (result == 0 && size >= 0) notes().Add("fsync", begin_ns, size);
  errno = errnum;
  return result;
}
}
