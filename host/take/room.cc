#include "take/room.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>

namespace corvane {

std::optional<int64_t> free_bytes_at(const std::string& path) {
  struct statvfs disk = {};
  if (statvfs(path.c_str(), &disk) != 0 || disk.f_blocks == 0) {
    return std::nullopt;
  }
  // More than fits is more than any take needs.
  const double bytes =
      static_cast<double>(disk.f_bavail) * static_cast<double>(disk.f_frsize);
  constexpr double kMost = 1e18;
  return static_cast<int64_t>(std::min(bytes, kMost));
}

int64_t size_at(const std::string& path) {
  struct stat file = {};
  return stat(path.c_str(), &file) == 0 ? file.st_size : 0;
}

}  // namespace corvane
