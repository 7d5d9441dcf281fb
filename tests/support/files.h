// Files and folders for tests. Failures end the test program: a test that
// cannot prepare its files has nothing to say.
#ifndef CORVANE_TESTS_SUPPORT_FILES_H_
#define CORVANE_TESTS_SUPPORT_FILES_H_

#include <string>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// A fresh folder, removed with all it holds.
class TempDir {
 public:
  // On disk, where temporary files go.
  TempDir();
  explicit TempDir(const std::string& parent);
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  // The path of `name` inside the folder.
  std::string Path(const std::string& name) const;

 private:
  std::string path_;
};

// Makes `dir` the working directory and goes back at the end.
class WorkingDir {
 public:
  explicit WorkingDir(const std::string& dir);
  ~WorkingDir();
  WorkingDir(const WorkingDir&) = delete;
  WorkingDir& operator=(const WorkingDir&) = delete;

 private:
  std::string previous_;
};

Bytes ReadFile(const std::string& path);
// Creates or replaces.
void WriteFile(const std::string& path, const Bytes& content);
// Adds to the end through a descriptor of its own.
void AppendToFile(const std::string& path, const Bytes& content);
// Cuts the file to `size` bytes.
void TruncateFile(const std::string& path, size_t size);
bool Exists(const std::string& path);
int64_t FileSize(const std::string& path);
// The names in a folder, sorted.
std::vector<std::string> ListDir(const std::string& path);
// What this process's open descriptors point at, sorted. Those of another
// thread come and go; call it while the worker is idle.
std::vector<std::string> OpenDescriptors();

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_FILES_H_
