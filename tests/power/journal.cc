#include "power/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace corvane_test {
namespace {

int open_or_exit(const char* path, int flags) {
  const int fd = open(path, flags | O_CLOEXEC, 0600);
  if (fd >= 0) return fd;
  std::perror(path);
  std::exit(EXIT_FAILURE);
}

// What a call that moves `size` bytes has come to: 0 or an errno value. Files
// in memory take and give all or nothing.
int outcome(ssize_t moved, size_t size) {
  if (moved < 0) return errno;
  return static_cast<size_t>(moved) == size ? 0 : EIO;
}

}  // namespace

uint64_t now_ns() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000U +
         static_cast<uint64_t>(now.tv_nsec);
}

Journal::Journal(const char* image, const char* journal)
    : image_(open_or_exit(image, O_RDWR)),
      journal_(open_or_exit(journal, O_WRONLY | O_CREAT | O_TRUNC | O_APPEND)) {
  struct stat file = {};
  if (fstat(image_, &file) == 0) size_ = file.st_size;
}

Journal::~Journal() {
  close(journal_);
  close(image_);
}

int Journal::Read(char* out, size_t size, int64_t offset) const {
  return outcome(pread(image_, out, size, offset), size);
}

int Journal::Write(const char* data, size_t size, int64_t offset) {
  const uint64_t begin_ns = now_ns();
  const int errnum = outcome(pwrite(image_, data, size, offset), size);
  if (errnum != 0) return errnum;
  return Keep({begin_ns, 0, static_cast<uint64_t>(offset),
               static_cast<uint32_t>(size), kWrite},
              data);
}

int Journal::Flush() { return Keep({now_ns(), 0, 0, 0, kFlush}, nullptr); }

// The answer follows at once, so this is when it ends.
int Journal::Keep(Header header, const char* data) {
  header.end_ns = now_ns();
  const iovec parts[] = {{&header, sizeof(header)},
                         {const_cast<char*>(data), header.size}};
  return outcome(writev(journal_, parts, 2), sizeof(header) + header.size);
}

}  // namespace corvane_test
