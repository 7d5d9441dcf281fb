#include "looks/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "terminal/wording.h"

namespace corvane {

RegularFile::RegularFile(const std::string& path) { Open(path); }

RegularFile::~RegularFile() {
  if (fd_ >= 0) close(fd_);
}

void RegularFile::Open(const std::string& path) {
  // A pipe without a writer would be waited for.
  fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat file = {};
  if (fd_ < 0 || fstat(fd_, &file) != 0) {
    is_missing_ = errno == ENOENT;
    const bool is_forbidden = errno == EACCES;
    error_ = std::strerror(errno);
    if (is_forbidden) {
      error_ += "; make it readable first: chmod u+rw " + shell_word(path);
    }
  } else if (S_ISDIR(file.st_mode)) {
    error_ = "this is a folder; name a file in it";
  } else if (!S_ISREG(file.st_mode)) {
    error_ = "not a regular file; name one";
  } else if (file.st_size == 0) {
    is_empty_ = true;
    error_ = "the file is empty";
  }
  size_ = file.st_size;
}

std::vector<uint8_t> RegularFile::Read(int64_t offset, size_t size) const {
  std::vector<uint8_t> bytes(size);
  size_t done = 0;
  while (done < size) {
    const ssize_t got =
        pread(fd_, bytes.data() + done, size - done,
              static_cast<off_t>(offset + static_cast<int64_t>(done)));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    done += static_cast<size_t>(got);
  }
  bytes.resize(done);
  return bytes;
}

}  // namespace corvane
