// The plugin's `normalize_path` against its naive twin.
#include <filesystem>

#include "finalize/finalize_path.h"
#include "fuzzing.h"
#include "support/naive_path.h"

namespace corvane_fuzz {
namespace {

// The twin's time grows with the square of the length.
constexpr size_t kLongestPath = 512;

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using corvane_fuzz::Require;
  if (size > corvane_fuzz::kLongestPath) return 0;
  const std::string path(data, data + size);
  const std::string actual = normalize_path(path);
  const std::string expected = corvane_test::NaiveNormalize(
      path, std::filesystem::current_path().string());
  Require(actual == expected,
          "\"" + expected + "\" is due, came \"" + actual + "\"");
  Require(normalize_path(actual) == actual, "normal, yet changed once more");
  return 0;
}
