// Samples as they reach the plugin.
#include "audio/audio_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <limits>

#include "host/sound_file.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::AudioSource;
using corvane::to_s16;

class AudioSourceTest : public ::testing::Test {
 protected:
  // All that a file holds, read in pieces of `piece` bytes.
  Bytes ReadAll(const std::string& path, size_t piece = 960) {
    std::string error;
    source_ = corvane::open_audio_file(path, &error);
    if (source_ == nullptr) {
      ADD_FAILURE() << error;
      return {};
    }
    return Drain(piece);
  }

  Bytes Drain(size_t piece) {
    Bytes all;
    Bytes buffer(piece);
    while (const size_t got = source_->Read(buffer.data(), buffer.size())) {
      all.insert(all.end(), buffer.begin(),
                 buffer.begin() + static_cast<ptrdiff_t>(got));
    }
    return all;
  }

  std::string Path(const std::string& name) const { return dir_.Path(name); }

  TempDir dir_;
  std::unique_ptr<AudioSource> source_;
};

TEST_F(AudioSourceTest, SixteenBitSourcesComeThroughBitForBit) {
  const Bytes pcm = Concat(Noise(5000, 2), FullScale(100, 2));
  for (const int format : {SF_FORMAT_WAV, SF_FORMAT_FLAC, SF_FORMAT_AIFF}) {
    WriteShorts(Path("in"), format | SF_FORMAT_PCM_16, 44100, 2, Samples(pcm));
    EXPECT_EQ(ReadAll(Path("in")), pcm) << std::hex << format;
    EXPECT_EQ(source_->format().sample_rate, 44100);
    EXPECT_EQ(source_->format().channels, 2);
    EXPECT_EQ(source_->total_frames(), 5100);
    EXPECT_EQ(source_->error(), "");
  }
}

TEST_F(AudioSourceTest, EightBitSourcesComeThroughExactly) {
  const std::vector<int16_t> samples = {-32768, -256, 0, 256, 32512};
  WriteShorts(Path("in"), SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8000, 1, samples);
  EXPECT_EQ(Samples(ReadAll(Path("in"))), samples);
}

TEST_F(AudioSourceTest, AQuietFloatFileKeepsItsLevel) {
  const std::vector<float> samples = {0.0f, 1.0f / 32768, -2.0f / 32768,
                                      100.4f / 32768};
  for (const int depth : {SF_FORMAT_FLOAT, SF_FORMAT_DOUBLE}) {
    WriteFloats(Path("in"), SF_FORMAT_WAV | depth, 48000, 1, samples);
    EXPECT_EQ(Samples(ReadAll(Path("in"))),
              (std::vector<int16_t>{0, 1, -2, 100}));
  }
}

TEST_F(AudioSourceTest, AFloatFileBeyondFullScaleIsClipped) {
  WriteFloats(Path("in"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 48000, 1,
              {0.99997f, 1.0f, 1.5f, 1e30f, -1.0f, -1.5f, -1e30f});
  EXPECT_EQ(Samples(ReadAll(Path("in"))),
            (std::vector<int16_t>{32767, 32767, 32767, 32767, -32768, -32768,
                                  -32768}));
}

TEST_F(AudioSourceTest, WiderIntegersAreRoundedToTheNearestStep) {
  const std::vector<int32_t> samples = {0x00010000,  0x00018000 + 0x100,
                                        0x00017f00,  -0x00020000,
                                        -0x00008100, 0x7fffff00};
  const std::vector<int16_t> rounded = {1, 2, 1, -2, -1, 32767};
  for (const int depth : {SF_FORMAT_PCM_24, SF_FORMAT_PCM_32}) {
    WriteInts(Path("in"), SF_FORMAT_WAV | depth, 48000, 1, samples);
    EXPECT_EQ(Samples(ReadAll(Path("in"))), rounded) << std::hex << depth;
  }
}

TEST_F(AudioSourceTest, ACompressedFloatSourceKeepsItsLevel) {
  std::vector<float> samples(48000);
  for (size_t i = 0; i < samples.size(); ++i) {
    samples[i] =
        0.25f * static_cast<float>(std::sin(static_cast<double>(i) * 0.05));
  }
  WriteFloats(Path("in"), SF_FORMAT_OGG | SF_FORMAT_VORBIS, 48000, 1, samples);
  double power = 0;
  const std::vector<int16_t> read = Samples(ReadAll(Path("in")));
  ASSERT_EQ(read.size(), samples.size());
  for (const int16_t sample : read) power += sample * sample;
  // A sine of a quarter of full scale, within the codec's loss.
  EXPECT_NEAR(std::sqrt(power / 48000), 0.25 * 32768 / std::sqrt(2), 100);
}

TEST_F(AudioSourceTest, ThePieceSizeLeavesNoTrace) {
  const Bytes pcm = Noise(1000, 2);
  WriteWav(Path("in"), pcm, 48000, 2);
  EXPECT_EQ(ReadAll(Path("in"), 4), pcm);
  EXPECT_EQ(ReadAll(Path("in"), 100000), pcm);
}

TEST_F(AudioSourceTest, AFileThatEndsEarlySaysSoAfterWhatItHolds) {
  WriteShorts(Path("in"), SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 1,
              Samples(Noise(48000)));
  TruncateFile(Path("in"), static_cast<size_t>(FileSize(Path("in"))) / 2);
  const Bytes read = ReadAll(Path("in"));
  EXPECT_GT(read.size(), 0U);
  EXPECT_LT(read.size(), 2 * 48000U);
  EXPECT_NE(source_->error(), "");
}

TEST_F(AudioSourceTest, AnMp3MayEndBeforeItsEstimatedLength) {
  WriteShorts(Path("in"), SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, 48000, 1,
              Samples(Sine(48000)));
  TruncateFile(Path("in"), static_cast<size_t>(FileSize(Path("in"))) / 2);
  const Bytes read = ReadAll(Path("in"));
  EXPECT_GT(read.size(), 0U);
  EXPECT_LT(static_cast<int64_t>(read.size()) / 2, *source_->total_frames());
  EXPECT_EQ(source_->error(), "");
}

TEST_F(AudioSourceTest, WhatIsNoAudioIsRefusedWithTheReason) {
  std::string error;
  EXPECT_EQ(corvane::open_audio_file(Path("gone"), &error), nullptr);
  EXPECT_EQ(error, "No such file or directory");
  EXPECT_EQ(corvane::open_audio_file(dir_.path(), &error), nullptr);
  EXPECT_EQ(error.rfind("not a regular file", 0), 0U) << error;
  WriteFile(Path("text"), Bytes(500, 'x'));
  EXPECT_EQ(corvane::open_audio_file(Path("text"), &error), nullptr);
  EXPECT_EQ(error.rfind("not audio that libsndfile can read", 0), 0U) << error;
}

TEST_F(AudioSourceTest, RawBytesGoThroughAsTheyCome) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  source_ = corvane::open_raw_input(ends[0], {48000, 2});
  EXPECT_EQ(source_->wait_fd(), ends[0]);
  EXPECT_EQ(source_->total_frames(), std::nullopt);
  const Bytes odd = {1, 2, 3, 4, 5};
  ASSERT_EQ(write(ends[1], odd.data(), odd.size()), 5);
  close(ends[1]);
  EXPECT_EQ(Drain(960), odd);
  EXPECT_EQ(source_->error(), "");
  close(ends[0]);
}

TEST_F(AudioSourceTest, ARawReadThatFailsSaysWhy) {
  source_ = corvane::open_raw_input(-1, {48000, 1});
  EXPECT_EQ(Drain(960), Bytes());
  EXPECT_EQ(source_->error(), "reading stopped early: Bad file descriptor");
}

TEST(ToS16Test, RoundsClipsAndSilencesWhatIsNoNumber) {
  EXPECT_EQ(to_s16(0.4f / 32768), 0);
  EXPECT_EQ(to_s16(0.6f / 32768), 1);
  EXPECT_EQ(to_s16(-0.6f / 32768), -1);
  EXPECT_EQ(to_s16(32767.4f / 32768), 32767);
  EXPECT_EQ(to_s16(std::numeric_limits<float>::infinity()), 32767);
  EXPECT_EQ(to_s16(-std::numeric_limits<float>::infinity()), -32768);
  EXPECT_EQ(to_s16(std::numeric_limits<float>::quiet_NaN()), 0);
}

}  // namespace
}  // namespace corvane_test
