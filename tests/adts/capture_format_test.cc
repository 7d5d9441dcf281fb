// docs/capture_format.md is read and held against the product: its bit table,
// its rates, its examples in hex and the figures that it gives for them.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "adts/frame.h"
#include "adts/scan.h"
#include "adts/stream_config.h"
#include "pieces.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

// The packet of the examples: a mono frame of silence.
const Bytes kSilence = Hex("01 18 20 07");

std::string Document() {
  std::ifstream file(CORVANE_CAPTURE_FORMAT_MD);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

struct Example {
  Bytes file;
  std::map<std::string, int64_t> figures;  // of the table that follows it
};

std::vector<Example> Examples(const std::string& document) {
  static const std::regex kFigure("^\\| ([a-z ]+) \\| (\\d+) \\|");
  std::vector<Example> examples;
  bool in_hex = false;
  std::istringstream lines(document);
  for (std::string line; std::getline(lines, line);) {
    std::smatch found;
    if (line == "```hex") {
      examples.emplace_back();
      in_hex = true;
    } else if (line == "```") {
      in_hex = false;
    } else if (in_hex) {
      examples.back().file = examples.back().file + Hex(line);
    } else if (!examples.empty() && std::regex_search(line, found, kFigure)) {
      examples.back().figures[found[1]] = std::stoll(found[2]);
    }
  }
  return examples;
}

unsigned BitsOf(const Bytes& bytes, int first, int last) {
  unsigned value = 0;
  for (int bit = first; bit <= last; ++bit) {
    value = value << 1 | (bytes[bit / 8] >> (7 - bit % 8) & 1);
  }
  return value;
}

TEST(CaptureFormat, TheBitTableIsWholeAndDescribesTheExamplesHeader) {
  static const std::regex kRow(
      "\\| (\\d+)(?:-(\\d+))? \\| ([A-Za-z]\\w*) \\| [^|]+ \\| "
      "(0x[0-9A-F]+|\\d+) "
      "\\|\n");
  const std::string document = Document();
  const Bytes example = Examples(document).at(0).file;
  int next = 0;
  for (std::sregex_iterator row(document.begin(), document.end(), kRow), end;
       row != end; ++row) {
    const int first = std::stoi((*row)[1]);
    const int last = (*row)[2].matched ? std::stoi((*row)[2]) : first;
    EXPECT_EQ(first, next) << (*row)[3];
    EXPECT_EQ(BitsOf(example, first, last), std::stoul((*row)[4], nullptr, 0))
        << (*row)[3];
    next = last + 1;
  }
  EXPECT_EQ(next, 56);
}

TEST(CaptureFormat, TheRateTableIsTheOneInUse) {
  static const std::regex kPair("\\| (\\d{1,2}) \\| (\\d{4,5}) (?=\\|)");
  const std::string document = Document();
  std::map<int, int> rates;
  for (std::sregex_iterator pair(document.begin(), document.end(), kPair), end;
       pair != end; ++pair) {
    rates[std::stoi((*pair)[1])] = std::stoi((*pair)[2]);
  }
  std::map<int, int> expected;
  for (size_t i = 0; i < adts::kSamplingFrequencies.size(); ++i) {
    expected[static_cast<int>(i)] = adts::kSamplingFrequencies[i];
  }
  EXPECT_EQ(rates, expected);
}

TEST(CaptureFormat, TheExamplesFramesAreWhatIsWritten) {
  Bytes frame;
  ASSERT_TRUE(adts::Frame({2, 8, 1}, kSilence.data(), kSilence.size(), &frame));
  const Bytes torn(frame.begin(), frame.begin() + 9);
  const std::vector<Example> examples = Examples(Document());
  ASSERT_EQ(examples.size(), 2U);
  EXPECT_EQ(examples[0].file, frame + frame + torn);
  EXPECT_EQ(examples[1].file,
            frame + Hex("AA BB CC") + frame + frame + Hex("00 00 00"));
}

TEST(CaptureFormat, TheExamplesFiguresAreWhatAScanReports) {
  for (const Example& example : Examples(Document())) {
    const Scan scan = ScanBytes(example.file);
    const std::map<std::string, int64_t> actual = {
        {"valid end", scan.valid_end},
        {"stream end", scan.stream_end},
        {"samples", scan.samples},
        {"sample rate", scan.sample_rate},
        {"skipped bytes", scan.skipped_bytes},
        {"duration in ms", scan.DurationMs()}};
    EXPECT_EQ(example.figures, actual);
  }
}

}  // namespace
}  // namespace corvane_test
