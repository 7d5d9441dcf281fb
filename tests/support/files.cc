#include "support/files.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace corvane_test {
namespace fs = std::filesystem;
namespace {

void Write(const std::string& path, const Bytes& content,
           std::ios::openmode mode) {
  std::ofstream file(path, std::ios::binary | mode);
  file.write(reinterpret_cast<const char*>(content.data()),
             static_cast<std::streamsize>(content.size()));
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace

TempDir::TempDir() : TempDir(fs::temp_directory_path().string()) {}

TempDir::TempDir(const std::string& parent) {
  std::string name = parent + "/corvane-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) {
    throw std::runtime_error("cannot create " + name);
  }
  path_ = name;
}

TempDir::~TempDir() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

std::string TempDir::Path(const std::string& name) const {
  return path_ + "/" + name;
}

WorkingDir::WorkingDir(const std::string& dir)
    : previous_(fs::current_path().string()) {
  fs::current_path(dir);
}

WorkingDir::~WorkingDir() {
  std::error_code ignored;
  fs::current_path(previous_, ignored);
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteFile(const std::string& path, const Bytes& content) {
  Write(path, content, std::ios::trunc);
}

void AppendToFile(const std::string& path, const Bytes& content) {
  Write(path, content, std::ios::app);
}

void TruncateFile(const std::string& path, size_t size) {
  fs::resize_file(path, size);
}

bool Exists(const std::string& path) { return fs::exists(path); }

int64_t FileSize(const std::string& path) {
  return static_cast<int64_t>(fs::file_size(path));
}

std::vector<std::string> ListDir(const std::string& path) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(path)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> OpenDescriptors() {
  std::vector<std::string> targets;
  for (const std::string& fd : ListDir("/proc/self/fd")) {
    std::error_code gone;  // the listing's own descriptor is closed by now
    const auto target = fs::read_symlink("/proc/self/fd/" + fd, gone);
    if (!gone) targets.push_back(fd + " -> " + target.string());
  }
  return targets;
}

}  // namespace corvane_test
