// Speech over and over, as a source for the host's recorder.
#ifndef CORVANE_TESTS_SOAK_ENDLESS_SOUND_H_
#define CORVANE_TESTS_SOAK_ENDLESS_SOUND_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "audio/audio_source.h"
#include "support/bytes.h"

namespace corvane_test {

class EndlessSound : public corvane::AudioSource {
 public:
  // Called before the read at which `frames` sample frames have been read.
  using Mark = std::function<void(int64_t frames)>;

  // Ends after `total` sample frames. The marks are `interval` sample frames
  // apart, so they stand at the same places of the audio in every run.
  EndlessSound(corvane::PcmFormat format, int64_t total, int64_t interval,
               Mark at_mark);

  corvane::PcmFormat format() const override { return format_; }
  std::string name() const override { return "speech without end"; }
  std::optional<int64_t> total_frames() const override { return total_; }
  int wait_fd() const override { return -1; }
  std::string how_to_continue() const override { return "-i REST"; }
  bool has_ended() const override { return read_ == total_; }
  size_t Read(uint8_t* out, size_t size) override;
  std::string error() const override { return ""; }

 private:
  const corvane::PcmFormat format_;
  const int64_t total_;
  const int64_t interval_;
  const Mark at_mark_;
  const Bytes loop_;  // whole sample frames
  size_t loop_at_ = 0;
  int64_t read_ = 0;  // sample frames
  int64_t next_mark_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SOAK_ENDLESS_SOUND_H_
