// A descriptor with one owner.
#ifndef CORVANE_HOST_ENGINE_FILE_DESCRIPTOR_H_
#define CORVANE_HOST_ENGINE_FILE_DESCRIPTOR_H_

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace corvane {

class FileDescriptor {
 public:
  // Takes over `fd`, which is negative for none.
  explicit FileDescriptor(int fd = -1) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept
      : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~FileDescriptor() {
    if (fd_ >= 0) close(fd_);
  }

  int get() const { return fd_; }
  bool is_open() const { return fd_ >= 0; }

  // For what was written: returns 0, or the errno with which it failed.
  int Close() { return close(std::exchange(fd_, -1)) == 0 ? 0 : errno; }

 private:
  int fd_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_FILE_DESCRIPTOR_H_
