#include "soak/endless_sound.h"

#include <algorithm>
#include <utility>

#include "support/pcm.h"

namespace corvane_test {
namespace {

// The channels say the same, each a little later than the one before: channels
// that are equal cost the encoder next to nothing.
Bytes SpeechOn(int channels) {
  constexpr size_t kLag = 1000;  // sample frames
  const Bytes mono = Speech();
  const size_t frames = mono.size() / 2;
  Bytes pcm;
  pcm.reserve(mono.size() * channels);
  for (size_t i = 0; i < frames; ++i) {
    for (int c = 0; c < channels; ++c) {
      const size_t from = (i + c * kLag) % frames * 2;
      pcm.push_back(mono[from]);
      pcm.push_back(mono[from + 1]);
    }
  }
  return pcm;
}

}  // namespace

EndlessSound::EndlessSound(corvane::PcmFormat format, int64_t total,
                           int64_t interval, Mark at_mark)
    : format_(format),
      total_(total),
      interval_(interval),
      at_mark_(std::move(at_mark)),
      loop_(SpeechOn(format.channels)),
      next_mark_(interval) {}

size_t EndlessSound::Read(uint8_t* out, size_t size) {
  if (read_ >= next_mark_) {
    at_mark_(read_);
    next_mark_ += interval_;
  }
  const size_t frame = format_.bytes_per_frame();
  const size_t left = static_cast<size_t>(total_ - read_) * frame;
  const size_t count = std::min(size, left);
  for (size_t done = 0; done < count;) {
    const size_t piece = std::min(count - done, loop_.size() - loop_at_);
    std::copy_n(loop_.begin() + static_cast<ptrdiff_t>(loop_at_), piece,
                out + done);
    done += piece;
    loop_at_ = (loop_at_ + piece) % loop_.size();
  }
  read_ += static_cast<int64_t>(count / frame);
  return count;
}

}  // namespace corvane_test
