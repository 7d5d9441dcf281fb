// Lexical normalisation of paths: a table, and a second implementation that
// takes the text apart with the standard library.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>

#include "finalize/finalize_path.h"
#include "support/files.h"
#include "support/naive_path.h"

namespace corvane_test {
namespace {

class NormalizePathTest : public testing::Test {
 protected:
  TempDir dir_;
};

TEST_F(NormalizePathTest, AbsolutePathsLoseDotsAndSuperfluousSlashes) {
  const std::map<std::string, std::string> table = {
      {"/a/./b/../c/", "/a/c"},
      {"/../x", "/x"},
      {"//", "/"},
      {"/", "/"},
      {"///a//b", "/a/b"},
      {"/a/.../b", "/a/.../b"},
      {"/.a/..b/c..", "/.a/..b/c.."},
      {"/a/b/../../../..", "/"},
      {"/a/..", "/"},
      {"/a/b/.", "/a/b"},
      {"/A/a", "/A/a"},
      {"/ /\t", "/ /\t"},
  };
  for (const auto& [input, expected] : table) {
    EXPECT_EQ(normalize_path(input), expected) << "input " << input;
  }
}

TEST_F(NormalizePathTest, RelativePathsStartFromTheWorkingDirectory) {
  const WorkingDir here(dir_.path());
  const std::string cwd = std::filesystem::current_path().string();
  const std::map<std::string, std::string> table = {
      {"", cwd},
      {".", cwd},
      {"a//b/./c", cwd + "/a/b/c"},
      {"rec/a.aac", cwd + "/rec/a.aac"},
      {"./rec//a.aac", cwd + "/rec/a.aac"},
      {"..", std::filesystem::path(cwd).parent_path().string()},
      {"../../../../../../..", "/"},
  };
  for (const auto& [input, expected] : table) {
    EXPECT_EQ(normalize_path(input), expected) << "input " << input;
  }
}

TEST_F(NormalizePathTest, WithoutAWorkingDirectoryTheRootTakesItsPlace) {
  const std::string gone = dir_.Path("gone");
  std::filesystem::create_directory(gone);
  const WorkingDir here(gone);
  ASSERT_EQ(rmdir(gone.c_str()), 0);
  EXPECT_EQ(normalize_path("x"), "/x");
  EXPECT_EQ(normalize_path(""), "/");
  EXPECT_EQ(normalize_path("../a/./b"), "/a/b");
  EXPECT_EQ(normalize_path("/a/../b"), "/b");
}

TEST_F(NormalizePathTest, NothingNeedsToExistAndLinksAreNotFollowed) {
  std::filesystem::create_directory(dir_.Path("real"));
  std::filesystem::create_symlink("real", dir_.Path("link"));
  EXPECT_EQ(normalize_path(dir_.Path("link/../a")), dir_.Path("a"));
  EXPECT_EQ(normalize_path("/no/such/../place"), "/no/place");
}

TEST_F(NormalizePathTest, EqualsASecondImplementationOnRandomText) {
  const WorkingDir here(dir_.path());
  const std::string cwd = std::filesystem::current_path().string();
  std::mt19937 random(1);
  const std::string alphabet = "/./.a";
  for (int round = 0; round < 100000; ++round) {
    std::string path(random() % 16, ' ');
    for (char& c : path) c = alphabet[random() % alphabet.size()];
    ASSERT_EQ(normalize_path(path), NaiveNormalize(path, cwd))
        << "input " << path;
  }
}

}  // namespace
}  // namespace corvane_test
