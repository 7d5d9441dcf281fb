// The library offers what its headers declare, no less and no more.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

std::string declarations() {
  std::string all;
  for (const auto& entry :
       std::filesystem::directory_iterator(EMBEDDING_HEADERS)) {
    std::ifstream file(entry.path());
    all.append(std::istreambuf_iterator<char>(file), {});
  }
  return all;
}

// Every match's first group.
std::set<std::string> matches(const std::string& text, const char* pattern) {
  const std::regex regex(pattern);
  std::set<std::string> found;
  for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end;
       ++it) {
    found.insert((*it)[1]);
  }
  return found;
}

std::set<std::string> declared_functions() {
  const std::string text = declarations();
  // A declaration at the start of a line; a callback's type has no such name.
  std::set<std::string> names =
      matches(text, R"(\n(?:const )?\w+\*? (fl_\w+)\()");
  for (const std::string& type :
       matches(text, R"(\nG_DECLARE_\w+\(\s*\w+,\s*(fl_\w+),)")) {
    names.insert(type + "_get_type");
  }
  return names;
}

// Defined dynamic symbols, but for the weak and unique ones that templates of
// the C++ library leave in any C++ program.
std::set<std::string> exported_symbols() {
  FILE* nm = popen("nm -D --defined-only '" EMBEDDING_LIBRARY "'", "r");
  if (nm == nullptr) return {};
  std::string output;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, nm)) > 0;) {
    output.append(buffer, n);
  }
  EXPECT_EQ(pclose(nm), 0);
  return matches(output, R"(\w+ [^WVvwu] (\S+)\n)");
}

TEST(SymbolsTest, TheLibraryExportsWhatTheHeadersDeclare) {
  const std::set<std::string> declared = declared_functions();
  EXPECT_GT(declared.size(), 100u);
  EXPECT_THAT(exported_symbols(), testing::ContainerEq(declared));
}

TEST(SymbolsTest, MethodCodecsHaveNoWrappers) {
  for (const std::string& name : exported_symbols()) {
    if (name == "fl_method_codec_get_type") continue;
    EXPECT_NE(name.rfind("fl_method_codec_", 0), 0u) << name;
  }
}

}  // namespace
