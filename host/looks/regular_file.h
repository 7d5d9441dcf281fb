// A file that a command looks at before anything is done to it.
#ifndef CORVANE_HOST_LOOKS_REGULAR_FILE_H_
#define CORVANE_HOST_LOOKS_REGULAR_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

class RegularFile {
 public:
  // Opens `path` to read. When it is no regular file with something in it, or
  // cannot be opened, error() says so.
  explicit RegularFile(const std::string& path);
  ~RegularFile();
  RegularFile(const RegularFile&) = delete;
  RegularFile& operator=(const RegularFile&) = delete;

  // What is wrong with it, as a clause; empty when all is well.
  const std::string& error() const { return error_; }
  bool is_missing() const { return is_missing_; }
  bool is_empty() const { return is_empty_; }

  int fd() const { return fd_; }
  int64_t size() const { return size_; }

  // Up to `size` bytes from `offset` on; fewer at the end of the file, or where
  // reading fails.
  std::vector<uint8_t> Read(int64_t offset, size_t size) const;

  // Reads up to the first byte that is none; false where reading fails.
  bool IsAllZeros() const;

 private:
  void Open(const std::string& path);

  int fd_ = -1;
  int64_t size_ = 0;
  std::string error_;
  bool is_missing_ = false;
  bool is_empty_ = false;
};

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_REGULAR_FILE_H_
