#include "take/capture_lock.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <system_error>

namespace corvane {
namespace {

namespace fs = std::filesystem;

bool is_same_file(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

struct flock whole_file() {
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return lock;
}

// proc(5): a descriptor's fdinfo lists the locks that were taken through it.
bool holds_lock(const fs::path& fdinfo) {
  std::ifstream lines(fdinfo);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("lock:", 0) == 0 &&
        line.find("OFDLCK") != std::string::npos) {
      return true;
    }
  }
  return false;
}

// How many descriptors of the process in `proc` lead to the file; with
// `locking`, only those through which it is locked.
int descriptors_of(const fs::path& proc, const struct stat& file,
                   bool locking) {
  int count = 0;
  std::error_code error;
  for (const fs::directory_entry& entry :
       fs::directory_iterator(proc / "fd", error)) {
    struct stat open_file = {};
    if (stat(entry.path().c_str(), &open_file) != 0) continue;
    if (!is_same_file(open_file, file)) continue;
    if (locking && !holds_lock(proc / "fdinfo" / entry.path().filename())) {
      continue;
    }
    ++count;
  }
  return count;
}

bool is_number(const std::string& text) {
  return text.find_first_not_of("0123456789") == std::string::npos;
}

CaptureHolder find_holder(int fd) {
  struct stat file = {};
  if (fstat(fd, &file) != 0) return {};
  std::error_code error;
  for (const fs::directory_entry& entry :
       fs::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename().string();
    if (is_number(name) && descriptors_of(entry.path(), file, true) > 0) {
      return {std::stoi(name)};
    }
  }
  return {};
}

FileDescriptor open_regular(const std::string& path, int mode) {
  FileDescriptor file(open(path.c_str(), mode | O_CLOEXEC | O_NONBLOCK));
  struct stat found = {};
  if (!file.is_open() || fstat(file.get(), &found) != 0 ||
      !S_ISREG(found.st_mode)) {
    return FileDescriptor();
  }
  return file;
}

}  // namespace

std::optional<CaptureHolder> holder_of(const std::string& path) {
  const FileDescriptor file = open_regular(path, O_RDONLY);
  struct flock lock = whole_file();
  if (!file.is_open() || fcntl(file.get(), F_OFD_GETLK, &lock) != 0 ||
      lock.l_type == F_UNLCK) {
    return std::nullopt;
  }
  return find_holder(file.get());
}

std::string held_by(const CaptureHolder& holder) {
  return "another corvane is at work on it" +
         (holder.pid ? " (process " + std::to_string(*holder.pid) + ")"
                     : std::string()) +
         "; wait until that has ended, or name another file";
}

std::optional<CaptureHolder> CaptureLock::Take(const std::string& path) {
  FileDescriptor file = open_regular(path, O_RDWR);
  if (!file.is_open()) return std::nullopt;
  struct flock lock = whole_file();
  if (fcntl(file.get(), F_OFD_SETLK, &lock) != 0 &&
      (errno == EAGAIN || errno == EACCES)) {
    return find_holder(file.get());
  }
  file_ = std::move(file);
  return std::nullopt;
}

bool CaptureLock::IsAt(const std::string& path) const {
  struct stat locked = {};
  struct stat found = {};
  return fstat(fd(), &locked) == 0 && stat(path.c_str(), &found) == 0 &&
         is_same_file(locked, found);
}

bool CaptureLock::IsRemoved() const {
  struct stat locked = {};
  return fstat(fd(), &locked) == 0 && locked.st_nlink == 0;
}

bool CaptureLock::IsOpenElsewhereHere() const {
  struct stat locked = {};
  if (fstat(fd(), &locked) != 0) return false;
  return descriptors_of("/proc/self", locked, false) != 1;
}

std::string CaptureLock::CurrentName() const {
  std::error_code error;
  const fs::path link = "/proc/self/fd/" + std::to_string(fd());
  return fs::read_symlink(link, error).string();
}

}  // namespace corvane
