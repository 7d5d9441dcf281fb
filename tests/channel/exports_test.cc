// What applications see of the library: two functions and a header.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "public_header.h"

namespace corvane_test {
namespace {

std::string OutputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"),
                                                   pclose);
  std::string output;
  char piece[4096];
  while (size_t got = fread(piece, 1, sizeof(piece), pipe.get())) {
    output.append(piece, got);
  }
  return output;
}

// Whether a name is one of the marks that linkers set. With --export-dynamic,
// which GTK may bring along, or for a library that refers to them, they export
// these as well.
bool IsLinkersMark(const std::string& name) {
  return name == "_init" || name == "_fini" || name == "__bss_start" ||
         name == "_edata" || name == "_end";
}

// The names that `library` defines for others. Weak ones (V, W, u) are copies
// of templates of the standard library, which any other copy may replace.
std::vector<std::string> StrongSymbols(const std::string& library) {
  std::istringstream lines(OutputOf("nm -D --defined-only '" + library + "'"));
  std::vector<std::string> names;
  std::string address, kind, name;
  while (lines >> address >> kind >> name) {
    const bool weak = std::string("VWuvw").find(kind) != std::string::npos;
    if (!weak && !IsLinkersMark(name)) names.push_back(name);
  }
  return names;
}

TEST(ExportsTest, TheLibraryExportsTwoFunctionsAndNothingElse) {
  EXPECT_THAT(
      StrongSymbols(CORVANE_PLUGIN_LIBRARY),
      testing::UnorderedElementsAre("corvane_plugin_get_type",
                                    "corvane_plugin_register_with_registrar"));
}

// How loud libav is, and where its messages go, is the application's business.
TEST(ExportsTest, TheLibraryDoesNotTouchTheLogOfLibav) {
  const std::string needed = OutputOf(
      "nm -D --undefined-only '" + std::string(CORVANE_PLUGIN_LIBRARY) + "'");
  EXPECT_THAT(needed, testing::HasSubstr("avcodec_send_frame"));
  EXPECT_THAT(needed, testing::Not(testing::HasSubstr("av_log")));
}

TEST(ExportsTest, ThePublicHeaderServesC) {
  EXPECT_EQ(plugin_type_seen_from_c(), corvane_plugin_get_type());
}

TEST(ExportsTest, ThePublicHeaderServesCxx14) {
  EXPECT_EQ(plugin_type_seen_from_cxx14(), corvane_plugin_get_type());
}

}  // namespace
}  // namespace corvane_test
