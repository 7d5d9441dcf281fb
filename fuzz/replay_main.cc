// Runs a fuzz target over files, and over all files of folders: what it once
// found is held in builds without libFuzzer too.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "fuzzing.h"
#include "support/files.h"

namespace {
namespace fs = std::filesystem;

std::vector<std::string> InputsIn(const std::string& argument) {
  if (!fs::is_directory(argument)) return {argument};
  std::vector<std::string> files;
  for (const std::string& name : corvane_test::ListDir(argument)) {
    files.push_back(argument + "/" + name);
  }
  return files;
}

// In a buffer of exactly its size, so that a sanitizer sees a read behind it.
void Replay(const std::string& path) {
  std::cout << path << std::endl;  // said first: it may be the last word
  const corvane_test::Bytes read = corvane_test::ReadFile(path);
  const corvane_test::Bytes exact(read);
  LLVMFuzzerTestOneInput(exact.data(), exact.size());
}

}  // namespace

int main(int argc, char** argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const std::string& path : InputsIn(argv[i])) {
      Replay(fs::absolute(path).string());
      ++count;
    }
  }
  std::cout << "Held: " << count << " inputs" << std::endl;
  return count > 0 ? 0 : 1;  // none at all proves nothing
}
