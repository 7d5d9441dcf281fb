// A file is known by its first bytes.
#include "audio/file_kind.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace corvane_test {
namespace {

using corvane::kind_of;

Bytes Text(const std::string& text) { return Bytes(text.begin(), text.end()); }

TEST(FileKindTest, KnownStartsAreNamed) {
  const std::vector<std::pair<Bytes, std::string>> starts = {
      {Text("RIFF....WAVE"), "WAV"},
      {Text(std::string("RIFF\0\0\0\0\0\0\0\0", 12)), "WAV"},
      {Text("RIFF"), "WAV"},
      {Text("RIFF....AVI "), "RIFF of another form"},
      {Text("RIFX....WAVE"), "big-endian WAV"},
      {Text("RF64....WAVE"), "RF64 (WAV of more than 4 GiB)"},
      {Text("fLaC........"), "FLAC"},
      {Text("OggS........"), "Ogg"},
      {Text("FORM....AIFF"), "AIFF"},
      {Text("....ftypM4A "), "MP4"},
      {Text("ID3........."), "MP3 or AAC with an ID3 tag"},
      {{0x1A, 0x45, 0xDF, 0xA3}, "Matroska"},
      {{0xFF, 0xFB, 0x90, 0x64}, "MP3"},
      {{0xFF, 0xF1, 0x50, 0x80}, "ADTS"},
      {{0xFF, 0xF8, 0x50, 0x80}, "ADTS"}};
  for (const auto& [start, kind] : starts) {
    EXPECT_EQ(kind_of(start), kind) << testing::PrintToString(start);
  }
}

TEST(FileKindTest, OtherStartsAreNotGuessed) {
  const std::vector<Bytes> starts = {{},
                                     {0xFF},
                                     {0xFF, 0xFE, 'a', 0},
                                     {0xFF, 0xD8, 0xFF},
                                     Text("RIF"),
                                     Text("fLa"),
                                     Text("...ftyp"),
                                     Bytes(12, 0),
                                     Bytes(12, 'x')};
  for (const Bytes& start : starts) {
    EXPECT_EQ(kind_of(start), "") << testing::PrintToString(start);
  }
}

}  // namespace
}  // namespace corvane_test
