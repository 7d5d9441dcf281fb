#include "take/rescue.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "engine/file_descriptor.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

constexpr int kMostNames = 100;

// take.aac as take.rescued.aac, then take.rescued2.aac...
fs::path rescue_name(const fs::path& folder, const fs::path& capture,
                     int number) {
  return folder / (capture.stem().string() + ".rescued" +
                   (number > 1 ? std::to_string(number) : std::string()) +
                   capture.extension().string());
}

// A file that wasn't there before; its name goes into `path`.
FileDescriptor create_in(const fs::path& folder, const fs::path& capture,
                         std::string* path) {
  for (int number = 1; number <= kMostNames; ++number) {
    *path = rescue_name(folder, capture, number).string();
    FileDescriptor file(
        open(path->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
    if (file.is_open() || errno != EEXIST) return file;
  }
  return FileDescriptor();
}

// 0, or an errno.
int write_all(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t written = write(fd, data, size);
    if (written == 0) return EIO;
    if (written < 0 && errno != EINTR) return errno;
    if (written < 0) continue;
    data += written;
    size -= static_cast<size_t>(written);
  }
  return 0;
}

int copy_all(int from, int to) {
  std::array<char, 65536> buffer = {};
  for (off_t at = 0;;) {
    const ssize_t got = pread(from, buffer.data(), buffer.size(), at);
    if (got == 0) return fsync(to) == 0 ? 0 : errno;
    if (got < 0 && errno != EINTR) return errno;
    if (got < 0) continue;
    const int errnum = write_all(to, buffer.data(), static_cast<size_t>(got));
    if (errnum != 0) return errnum;
    at += got;
  }
}

// 0, or an errno. A copy that failed is taken away again: it is ours, and the
// next folder gets a whole one.
int copy_into(const fs::path& folder, int fd, const fs::path& capture,
              std::string* path) {
  FileDescriptor copy = create_in(folder, capture, path);
  if (!copy.is_open()) return errno;
  int errnum = copy_all(fd, copy.get());
  const int close_errnum = copy.Close();
  if (errnum == 0) errnum = close_errnum;
  if (errnum != 0) unlink(path->c_str());
  return errnum;
}

fs::path nearest_folder(const fs::path& capture) {
  std::error_code error;
  fs::path folder = fs::absolute(capture, error).parent_path();
  while (!fs::is_directory(folder, error) && folder.has_relative_path()) {
    folder = folder.parent_path();
  }
  return folder;
}

}  // namespace

Rescue rescue_removed(int fd, const std::string& capture_path) {
  struct stat file = {};
  if (fstat(fd, &file) == 0 && file.st_size == 0) {
    return {"", "nothing had been written yet"};
  }
  const fs::path capture(capture_path);
  std::string path;
  std::string error;
  for (const fs::path& folder :
       {nearest_folder(capture), fs::path(g_get_home_dir())}) {
    const int errnum = copy_into(folder, fd, capture, &path);
    if (errnum == 0) return {path, ""};
    error += (error.empty() ? "" : ", ") + path + ": " + std::strerror(errnum);
  }
  return {"", error};
}

}  // namespace corvane
