#include "looks/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr size_t kPieceSize = 262144;  // bytes

}  // namespace

RegularFile::RegularFile(const std::string& path) { Open(path); }

RegularFile::~RegularFile() {
  if (fd_ >= 0) close(fd_);
}

void RegularFile::Open(const std::string& path) {
  struct stat file = {};
  // Opening some devices does something to them, and to a pipe's writer.
  const bool is_other =
      stat(path.c_str(), &file) == 0 && !S_ISREG(file.st_mode);
  // A pipe may be there by now, and one without a writer would be waited for.
  if (!is_other) fd_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (!is_other && (fd_ < 0 || fstat(fd_, &file) != 0)) {
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

bool RegularFile::IsAllZeros() const {
  int64_t done = 0;
  while (done < size_) {
    const std::vector<uint8_t> piece = Read(done, kPieceSize);
    // Each byte is like the one before it; many times as fast as a loop.
    if (piece.empty() || piece[0] != 0 ||
        std::memcmp(piece.data(), piece.data() + 1, piece.size() - 1) != 0) {
      return false;
    }
    done += static_cast<int64_t>(piece.size());
  }
  return true;
}

}  // namespace corvane
