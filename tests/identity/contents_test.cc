// What is recorded, and how much of it: the capture is ffmpeg's file for every
// kind of sound and every length around a frame.
#include <string>
#include <utility>
#include <vector>

#include "identity/take.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace {

using corvane_test::Bytes;
using corvane_test::FullScale;
using corvane_test::IdentityTest;
using corvane_test::Noise;
using corvane_test::Silence;
using corvane_test::SplitFrames;
using corvane_test::SpokenWords;
using corvane_test::Take;

constexpr size_t kLengths[] = {0, 1, 1023, 1024, 1025, 2047, 2048, 2049};

struct Format {
  int rate;
  int channels;
  int64_t bit_rate;
};

constexpr Format kFormats[] = {
    {48000, 1, 64000}, {44100, 2, 128000}, {8000, 6, 320000}};

std::vector<std::pair<std::string, Bytes>> Sounds(size_t frames, int channels) {
  return {{"speech", SpokenWords(frames, channels)},
          {"noise", Noise(frames, channels)},
          {"silence", Silence(frames, channels)},
          {"full scale", FullScale(frames, channels)}};
}

std::vector<Take> TakesOf(const Format& format, size_t frames) {
  std::vector<Take> takes;
  for (auto& [sound, pcm] : Sounds(frames, format.channels)) {
    takes.push_back({std::to_string(frames) + " sample frames of " + sound +
                         ", " + std::to_string(format.channels) + " channels",
                     std::move(pcm), format.rate, format.channels,
                     format.bit_rate});
  }
  return takes;
}

using Contents = IdentityTest;

TEST_F(Contents, OfEveryKindAndLengthAreWhatFfmpegWrites) {
  for (const Format& format : kFormats) {
    std::vector<Take> takes;
    for (const size_t frames : kLengths) {
      for (Take& take : TakesOf(format, frames)) {
        takes.push_back(std::move(take));
      }
    }
    ExpectWhatFfmpegWrites(takes);
  }
}

TEST_F(Contents, OfNSampleFramesMakeOneFrameMoreThanTheyFill) {
  for (const size_t frames : kLengths) {
    const size_t filled = (frames + 1023) / 1024;
    for (const Take& take : TakesOf(kFormats[0], frames)) {
      EXPECT_EQ(SplitFrames(*Recorded(take, {take.pcm})).size(),
                frames == 0 ? 0 : filled + 1)
          << take.name;
    }
  }
}

TEST_F(Contents, OfTheWholeSpeechSampleAreWhatFfmpegWrites) {
  std::vector<Take> takes;
  for (const int64_t bit_rate : {32000, 64000, 128000, 320000}) {
    takes.push_back({"speech", corvane_test::Speech(), 48000, 1, bit_rate});
  }
  ExpectWhatFfmpegWrites(takes);
}

}  // namespace
