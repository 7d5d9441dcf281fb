// A file that lives in memory: real descriptors and real system calls, no disk.
#ifndef CORVANE_TESTS_SUPPORT_MEMORY_FILE_H_
#define CORVANE_TESTS_SUPPORT_MEMORY_FILE_H_

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace corvane_test {

class MemoryFile {
 public:
  MemoryFile() : fd_(memfd_create("capture", MFD_CLOEXEC)) {
    if (fd_ < 0) abort();
  }
  explicit MemoryFile(const std::vector<uint8_t>& bytes) : MemoryFile() {
    Set(bytes);
  }
  ~MemoryFile() { close(fd_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  int fd() const { return fd_; }

  // Replaces the contents; the descriptor's offset stays where it is.
  void Set(const std::vector<uint8_t>& bytes) {
    const auto size = static_cast<ssize_t>(bytes.size());
    if (ftruncate(fd_, size) != 0 ||
        pwrite(fd_, bytes.data(), bytes.size(), 0) != size) {
      abort();
    }
  }

 private:
  int fd_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_MEMORY_FILE_H_
