#include "audio/level.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace corvane {
namespace {

constexpr int kFullScale = 32768;
constexpr int kBlocksPerSecond = 20;
constexpr int kHeldBlocks = kBlocksPerSecond * 3 / 2;
constexpr int kClipRun = 3;
// Twice 32.768, for a waveform goes as far down as up.
constexpr int kQuietSwing = 65;  // -60 dBFS

int sample_at(const uint8_t* pcm) {
  int16_t sample = 0;
  std::memcpy(&sample, pcm, sizeof(sample));
  return sample;
}

bool is_at_full_scale(int sample) {
  return sample == std::numeric_limits<int16_t>::max() ||
         sample == std::numeric_limits<int16_t>::min();
}

}  // namespace

double dbfs(int peak) {
  return 20 * std::log10(static_cast<double>(peak) / kFullScale);
}

Level::Level(const PcmFormat& format)
    : sample_rate_(std::max(format.sample_rate, 1)),
      bytes_per_frame_(format.bytes_per_frame()),
      block_frames_(
          static_cast<size_t>(std::max(sample_rate_ / kBlocksPerSecond, 1))),
      channels_(static_cast<size_t>(std::max(format.channels, 0))) {}

void Level::Hear(const uint8_t* pcm, size_t size) {
  if (bytes_per_frame_ == 0) return;
  size_t frames = size / bytes_per_frame_;
  while (frames > 0) {
    const size_t now = std::min(frames, block_frames_ - frames_in_block_);
    HearInBlock(pcm, now);
    pcm += now * bytes_per_frame_;
    frames -= now;
  }
}

std::vector<ChannelLevel> Level::channels() const {
  std::vector<ChannelLevel> levels;
  levels.reserve(channels_.size());
  for (const Channel& channel : channels_) {
    ChannelLevel level;
    level.peak = std::max(channel.high, -channel.low);
    for (const int peak : channel.recent) {
      level.peak = std::max(level.peak, peak);
    }
    level.held = std::max(channel.held, level.peak);
    levels.push_back(level);
  }
  return levels;
}

void Level::HearInBlock(const uint8_t* pcm, size_t frames) {
  for (Channel& channel : channels_) {
    if (frames_in_block_ == 0) channel.low = channel.high = sample_at(pcm);
    Widen(&channel, pcm, frames);
    CountClips(&channel, pcm, frames);
    pcm += sizeof(int16_t);
  }
  frames_in_block_ += frames;
  if (frames_in_block_ == block_frames_) EndBlock();
}

void Level::Widen(Channel* channel, const uint8_t* pcm, size_t frames) const {
  int low = channel->low;
  int high = channel->high;
  for (size_t i = 0; i < frames; ++i, pcm += bytes_per_frame_) {
    const int sample = sample_at(pcm);
    low = std::min(low, sample);
    high = std::max(high, sample);
  }
  channel->low = low;
  channel->high = high;
}

// Looks at single samples only where the block has reached full scale.
void Level::CountClips(Channel* channel, const uint8_t* pcm, size_t frames) {
  if (!is_at_full_scale(channel->low) && !is_at_full_scale(channel->high)) {
    channel->full_scale_run = 0;
    return;
  }
  for (size_t i = 0; i < frames; ++i, pcm += bytes_per_frame_) {
    const bool is_full = is_at_full_scale(sample_at(pcm));
    channel->full_scale_run = is_full ? channel->full_scale_run + 1 : 0;
    if (channel->full_scale_run == kClipRun) ++clips_;
  }
}

void Level::EndBlock() {
  int swing = 0;
  for (Channel& channel : channels_) {
    swing = std::max(swing, channel.high - channel.low);
    EndBlockOf(&channel);
  }
  const auto frames = static_cast<int64_t>(frames_in_block_);
  quiet_frames_ = swing <= kQuietSwing ? quiet_frames_ + frames : 0;
  still_frames_ = swing == 0 ? still_frames_ + frames : 0;
  frames_in_block_ = 0;
}

void Level::EndBlockOf(Channel* channel) {
  const int peak = std::max(channel->high, -channel->low);
  std::copy_backward(channel->recent, channel->recent + kRecentBlocks - 1,
                     channel->recent + kRecentBlocks);
  channel->recent[0] = peak;
  channel->low = channel->high = 0;
  ++channel->held_blocks;
  if (peak < channel->held && channel->held_blocks < kHeldBlocks) return;
  channel->held =
      *std::max_element(std::begin(channel->recent), std::end(channel->recent));
  channel->held_blocks = 0;
}

double Level::Seconds(int64_t frames) const {
  return static_cast<double>(frames) / sample_rate_;
}

}  // namespace corvane
