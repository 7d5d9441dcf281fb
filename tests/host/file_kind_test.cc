// A file is known by its first bytes.
#include "audio/file_kind.h"

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/pcm.h"

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
      {{0x7F, 'E', 'L', 'F'}, "ELF (a program or library)"},
      {{0xFF, 0xD8, 0xFF}, "JPEG"},
      {{0x89, 'P', 'N', 'G'}, "PNG"},
      {{0x1F, 0x8B}, "gzip"},
      {Concat(Bytes(257, 'x'), Text("ustar")), "tar"},
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
                                     {0xFF, 0xD8},
                                     Text("RIF"),
                                     Text("fLa"),
                                     Text("...ftyp"),
                                     Bytes(12, 0),
                                     Bytes(12, 'x')};
  for (const Bytes& start : starts) {
    EXPECT_EQ(kind_of(start), "") << testing::PrintToString(start);
  }
}

TEST(FileKindTest, InsteadOfSamplesAFileOfAudioIsNamed) {
  const std::vector<std::pair<std::string, std::string>> starts = {
      {"RIFF....WAVE", "WAV"},
      {"RIFF", "WAV"},
      {"fLaC", "FLAC"},
      {"OggS....", "Ogg"},
      {"ID3", "MP3 or AAC with an ID3 tag"}};
  for (const auto& [start, kind] : starts) {
    EXPECT_EQ(corvane::kind_instead_of_samples(Text(start)), kind) << start;
    EXPECT_FALSE(corvane::may_become_a_kind(Text(start))) << start;
  }
  // Samples may well begin like these.
  const std::vector<Bytes> samples = {
      {}, Text("RIF"), Text(".RIFF"), {0xFF, 0xFB, 0x90, 0x64}, {0x1F, 0x8B}};
  for (const Bytes& start : samples) {
    EXPECT_EQ(corvane::kind_instead_of_samples(start), "")
        << testing::PrintToString(start);
  }
}

TEST(FileKindTest, TooFewBytesToTellAreRecognised) {
  for (const std::string start : {"", "R", "RIF", "fLa", "O", "ID"}) {
    EXPECT_TRUE(corvane::may_become_a_kind(Text(start))) << start;
  }
  for (const std::string start : {"r", "RIA", "ID2", "RIFX"}) {
    EXPECT_FALSE(corvane::may_become_a_kind(Text(start))) << start;
  }
}

}  // namespace
}  // namespace corvane_test
