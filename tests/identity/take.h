// Takes to record over the channel and to compare with a reference.
#ifndef CORVANE_TESTS_IDENTITY_TAKE_H_
#define CORVANE_TESTS_IDENTITY_TAKE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/channel_fixture.h"

namespace corvane_test {

struct Take {
  std::string name;  // for failed expectations
  Bytes pcm;
  int rate;  // Hz
  int channels;
  int64_t bit_rate;  // bit/s
};

// The alsa sample's words on every channel, each later than the one before by
// 100 sample frames; `frames` from where the first word is under way.
Bytes SpokenWords(size_t frames, int channels);

// Speech, noise, silence and full scale, one after another: each of
// `frames_each` sample frames.
Bytes Mixture(size_t frames_each, int channels);

class IdentityTest : public ChannelTest {
 protected:
  // The capture that the take leaves, appended in these chunks; nothing when
  // the encoder refuses it.
  std::optional<Bytes> Recorded(const Take& take,
                                const std::vector<Bytes>& chunks);

  // Records each take in one chunk and expects ffmpeg's file, or its refusal.
  void ExpectWhatFfmpegWrites(const std::vector<Take>& takes);
};

// Shows sizes and the first difference instead of two files full of numbers.
void ExpectSameFile(const std::optional<Bytes>& actual,
                    const std::optional<Bytes>& expected,
                    const std::string& name);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_IDENTITY_TAKE_H_
