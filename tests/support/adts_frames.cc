#include "support/adts_frames.h"

#include <gtest/gtest.h>

#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr size_t kHeaderSize = 7;

size_t FrameLengthAt(const Bytes& capture, size_t at) {
  return (capture[at + 3] & 3) << 11 | capture[at + 4] << 3 |
         capture[at + 5] >> 5;
}

bool IsHeaderAt(const Bytes& capture, size_t at) {
  return at + kHeaderSize <= capture.size() && capture[at] == 0xFF &&
         capture[at + 1] == 0xF1 && FrameLengthAt(capture, at) > kHeaderSize;
}

}  // namespace

int FrequencyIndexOf(const Bytes& frame) { return frame.at(2) >> 2 & 15; }

int ChannelConfigOf(const Bytes& frame) {
  return (frame.at(2) & 1) << 2 | frame.at(3) >> 6;
}

std::vector<Bytes> SplitFrames(const Bytes& capture) {
  std::vector<Bytes> frames;
  for (size_t at = 0; at < capture.size();) {
    if (!IsHeaderAt(capture, at) ||
        at + FrameLengthAt(capture, at) > capture.size()) {
      ADD_FAILURE() << "no whole ADTS frame at byte " << at << " of "
                    << capture.size();
      break;
    }
    frames.push_back(Slice(capture, at, FrameLengthAt(capture, at)));
    at += frames.back().size();
  }
  return frames;
}

size_t FrameOffset(const std::vector<Bytes>& frames, size_t n) {
  size_t offset = 0;
  for (size_t i = 0; i < n; ++i) offset += frames.at(i).size();
  return offset;
}

int64_t FramesToMs(size_t frames, int rate) {
  return static_cast<int64_t>(frames) * 1024 * 1000 / rate;
}

}  // namespace corvane_test
