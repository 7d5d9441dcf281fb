#include "identity/take.h"

#include <algorithm>
#include <cstdio>

#include "identity/ffmpeg_command.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

// Sample frames of the alsa sample in which the speaker is not silent.
constexpr size_t kSpeechStart = 8000;
constexpr size_t kDelay = 100;

std::string Describe(const std::optional<Bytes>& file) {
  return file ? std::to_string(file->size()) + " bytes" : "refused";
}

}  // namespace

Bytes SpokenWords(size_t frames, int channels) {
  const Bytes words = Speech();
  Bytes pcm;
  for (size_t frame = 0; frame < frames; ++frame) {
    for (int channel = 0; channel < channels; ++channel) {
      const size_t at = kSpeechStart + frame + kDelay * channel;
      pcm.push_back(words.at(2 * at));
      pcm.push_back(words.at(2 * at + 1));
    }
  }
  return pcm;
}

Bytes Mixture(size_t frames_each, int channels) {
  return Concat(
      Concat(SpokenWords(frames_each, channels), Noise(frames_each, channels)),
      Concat(Silence(frames_each, channels), FullScale(frames_each, channels)));
}

std::optional<Bytes> IdentityTest::Recorded(const Take& take,
                                            const std::vector<Bytes>& chunks) {
  const std::string path = Path("take.aac");
  const Reply started =
      Call("start", CaptureArgs(path, take.rate, take.channels)
                        .With("bitRate", take.bit_rate));
  EXPECT_EQ(started, NullReply()) << take.name;
  for (const Bytes& chunk : chunks) {
    const Reply appended = Append(chunk);
    if (appended.code == "ENCODE_FAILED") return std::nullopt;
    EXPECT_EQ(appended, NullReply()) << take.name;
  }
  const Reply stopped = Stop();
  const Bytes file = ReadFile(path);
  // A capture without a frame is written as it should be, but isn't sealed.
  EXPECT_EQ(stopped.kind,
            file.empty() ? Reply::Kind::kError : Reply::Kind::kFigures)
      << take.name << ": " << stopped;
  // The next take of this test is a fresh one, not a second one behind it.
  std::remove(path.c_str());
  return file;
}

void IdentityTest::ExpectWhatFfmpegWrites(const std::vector<Take>& takes) {
  const auto expected = EncodedByFfmpeg(takes);
  for (size_t i = 0; i < takes.size(); ++i) {
    ExpectSameFile(Recorded(takes[i], {takes[i].pcm}), expected[i],
                   takes[i].name);
  }
}

void ExpectSameFile(const std::optional<Bytes>& actual,
                    const std::optional<Bytes>& expected,
                    const std::string& name) {
  if (actual == expected) return;
  ADD_FAILURE() << name << "\n  expected " << Describe(expected)
                << "\n  actual   " << Describe(actual);
  if (!actual || !expected) return;
  const auto difference = std::mismatch(actual->begin(), actual->end(),
                                        expected->begin(), expected->end());
  ADD_FAILURE() << "first difference at byte "
                << difference.first - actual->begin();
}

}  // namespace corvane_test
