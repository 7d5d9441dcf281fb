// How loud the audio is that comes in, and whether there is any in it.
#ifndef CORVANE_HOST_AUDIO_LEVEL_H_
#define CORVANE_HOST_AUDIO_LEVEL_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "audio/audio_source.h"

namespace corvane {

// Sample peaks, 0 to 32768, which is full scale.
struct ChannelLevel {
  int peak = 0;  // of the last tenth of a second
  int held = 0;  // the highest of the last second and a half
};

// A peak in dBFS: 0 for 32768, minus infinity for 0.
double dbfs(int peak);

// Time is counted in audio, not by the clock. Of one thread.
class Level {
 public:
  explicit Level(const PcmFormat& format);

  // What came: whole sample frames of interleaved s16le.
  void Hear(const uint8_t* pcm, size_t size);

  // One for each channel.
  std::vector<ChannelLevel> channels() const;

  // For how long no channel's waveform has reached -60 dBFS. Its middle is
  // where it swings about, so a constant offset doesn't count as sound.
  double quiet_s() const { return Seconds(quiet_frames_); }
  // For how long no sample has differed from the one before it: nothing is
  // connected, or nothing works.
  double still_s() const { return Seconds(still_frames_); }

  // How often a channel stayed at full scale for three samples in a row. One
  // alone may be the top of a waveform that just fits.
  int64_t clips() const { return clips_; }

 private:
  static constexpr int kRecentBlocks = 2;

  struct Channel {
    int low = 0;  // of the block, once it has a sample
    int high = 0;
    int recent[kRecentBlocks] = {};  // peaks of the blocks before
    int held = 0;
    int held_blocks = 0;     // since the held peak came
    int full_scale_run = 0;  // samples at full scale, up to now
  };

  void HearInBlock(const uint8_t* pcm, size_t frames);
  void Widen(Channel* channel, const uint8_t* pcm, size_t frames) const;
  void CountClips(Channel* channel, const uint8_t* pcm, size_t frames);
  void EndBlock();
  static void EndBlockOf(Channel* channel);
  double Seconds(int64_t frames) const;

  const int sample_rate_;
  const size_t bytes_per_frame_;
  const size_t block_frames_;
  std::vector<Channel> channels_;
  size_t frames_in_block_ = 0;
  int64_t quiet_frames_ = 0;
  int64_t still_frames_ = 0;
  int64_t clips_ = 0;
};

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_LEVEL_H_
