// What may be repaired, by the header alone.
#include "looks/wav_look.h"

#include <gtest/gtest.h>

#include "host/sound_file.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::format_in;
using corvane::value_of;
using corvane::WavField;

class WavLookTest : public ::testing::Test {
 protected:
  WavLookTest() {
    WriteWav(path_, Sine(1000, 2), 48000, 2);
    file_ = ReadFile(path_);
  }

  void Set(const WavField& field, uint32_t value) {
    for (size_t i = 0; i < field.width; ++i) {
      file_[field.offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
  }

  std::string Objection() {
    WriteFile(path_, file_);
    return corvane::objection_to_repair(corvane::RegularFile(path_)).reason;
  }

  TempDir dir_;
  const std::string path_ = dir_.Path("take.wav");
  Bytes file_;
};

TEST_F(WavLookTest, FieldsAreReadWhereTheHeaderHasThem) {
  EXPECT_EQ(value_of(corvane::kRiffSize, file_), 4036U);
  EXPECT_EQ(value_of(corvane::kChannels, file_), 2U);
  EXPECT_EQ(value_of(corvane::kSampleRate, file_), 48000U);
  EXPECT_EQ(value_of(corvane::kByteRate, file_), 192000U);
  EXPECT_EQ(value_of(corvane::kBlockAlign, file_), 4U);
  EXPECT_EQ(value_of(corvane::kBitsPerSample, file_), 16U);
  EXPECT_EQ(value_of(corvane::kDataSize, file_), 4000U);
  EXPECT_EQ(value_of(corvane::kDataSize, Slice(file_, 0, 43)), 0U);
}

TEST_F(WavLookTest, SizesOfAnyValueMayBeRepaired) {
  for (const uint32_t size : {0U, 1U, 3999U, 4001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    Set(corvane::kRiffSize, size);
    Set(corvane::kDataSize, size);
    EXPECT_EQ(Objection(), "") << size;
  }
}

TEST_F(WavLookTest, AHeaderWrittenInPartMayBeRepaired) {
  for (const size_t from : {size_t{0}, size_t{8}, size_t{12}, size_t{36}}) {
    std::fill(file_.begin() + static_cast<ptrdiff_t>(from), file_.begin() + 44,
              uint8_t{0});
    EXPECT_EQ(Objection(), "") << "from " << from;
    WriteWav(path_, Sine(1000, 2), 48000, 2);
    file_ = ReadFile(path_);
  }
}

TEST_F(WavLookTest, AFormatOfMoreThan16BytesIsALongerHeader) {
  Set(corvane::kFormatSize, 18);
  EXPECT_EQ(Objection(),
            "its header is longer than 44 bytes (a format of 18 bytes), and "
            "the rest of it would become audio");
}

TEST_F(WavLookTest, AChunkBeforeTheFormatIsALongerHeader) {
  const Bytes junk = {'J', 'U', 'N', 'K', 0, 0, 0, 0};
  file_ = Concat(Concat(Slice(file_, 0, 12), junk), Slice(file_, 12));
  EXPECT_EQ(Objection(),
            "its header is longer than 44 bytes (a chunk \"JUNK\" before the "
            "format), and the rest of it would become audio");
}

// A stale size leaves audio behind it, which does not look like chunks.
TEST_F(WavLookTest, AudioBehindAStaleSizeIsNotTakenForChunks) {
  Set(corvane::kRiffSize, 2036);
  Set(corvane::kDataSize, 2000);
  EXPECT_EQ(Objection(), "");
}

TEST_F(WavLookTest, SeveralWholeChunksBehindTheAudioAreAnObjection) {
  const Bytes odd = {'n', 'o', 't', 'e', 1, 0, 0, 0, 'x', 0};
  const Bytes empty = {'c', 'u', 'e', ' ', 0, 0, 0, 0};
  const Bytes plain = file_;
  file_ = Concat(Concat(plain, odd), empty);
  EXPECT_EQ(Objection(),
            "its header is right, and the 18 bytes of other chunks behind the "
            "audio would become audio");
  // Not to the end of the file: not chunks.
  file_ = Concat(file_, {1});
  EXPECT_EQ(Objection(), "");
}

TEST_F(WavLookTest, OnlyAPlausibleFormatIsKept) {
  const auto format = format_in(file_);
  ASSERT_TRUE(format);
  EXPECT_EQ(format->sample_rate, 48000);
  EXPECT_EQ(format->channels, 2);
  const std::vector<std::pair<WavField, uint32_t>> wrong = {
      {corvane::kSampleRate, 0},      {corvane::kSampleRate, 999},
      {corvane::kSampleRate, 768001}, {corvane::kChannels, 0},
      {corvane::kChannels, 3},        {corvane::kBlockAlign, 0}};
  for (const auto& [field, value] : wrong) {
    const Bytes plain = file_;
    Set(field, value);
    EXPECT_FALSE(format_in(file_)) << field.name << " " << value;
    file_ = plain;
  }
  EXPECT_FALSE(format_in({}));
}

}  // namespace
}  // namespace corvane_test
