// Where a take's audio comes from, as the plugin wants it: interleaved signed
// 16-bit little-endian PCM.
#ifndef CORVANE_HOST_AUDIO_AUDIO_SOURCE_H_
#define CORVANE_HOST_AUDIO_AUDIO_SOURCE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace corvane {

struct PcmFormat {
  int sample_rate = 0;  // Hz
  int channels = 0;
  size_t bytes_per_frame() const { return static_cast<size_t>(channels) * 2; }
};

// What a live source lost before it could be read.
struct Overruns {
  int64_t count = 0;
  int64_t lost_us = 0;  // of audio, all of them together
};

// Of one thread.
class AudioSource {
 public:
  virtual ~AudioSource() = default;

  virtual PcmFormat format() const = 0;

  // What to call the source in a message: a file's name, or standard input.
  virtual std::string name() const = 0;

  // The whole length in sample frames, where it is known beforehand.
  virtual std::optional<int64_t> total_frames() const = 0;

  // A descriptor to wait on for reading before each Read(); -1 when reading
  // never waits for anyone.
  virtual int wait_fd() const = 0;

  // Fills up to `size` bytes, a multiple of a sample frame; returns how many.
  // 0 when nothing has come yet, at the end, or after a failure, which error()
  // then names.
  virtual size_t Read(uint8_t* out, size_t size) = 0;

  // Whether a Read() that returned 0 was the last: nothing more will come.
  virtual bool has_ended() const = 0;

  // What went wrong while reading, as a clause; empty while all is well.
  virtual std::string error() const = 0;

  // What says behind `corvane resume FILE` that this source is meant, or one
  // like it; empty where that is so without a word.
  virtual std::string how_to_continue() const = 0;

  // Nothing where audio can't be lost on its way, or nobody would know.
  virtual std::optional<Overruns> overruns() const { return std::nullopt; }
};

// A float sample as 16 bits: full scale is 32768, what lies beyond is clipped,
// and what is not a number is silence.
int16_t to_s16(float sample);

// Opens a file that libsndfile can read. 16-bit sources come through bit for
// bit, all others rounded to the nearest step at their own level. NULL with
// `error` filled, as a clause, when that fails.
std::unique_ptr<AudioSource> open_audio_file(const std::string& path,
                                             std::string* error);

// Raw PCM from `fd` (borrowed). Bytes go through as they come, so the last
// sample frame may be incomplete. What starts like an audio file's is refused
// by the first Read(), as a failure, unless `takes_any_start`.
std::unique_ptr<AudioSource> open_raw_input(int fd, PcmFormat format,
                                            bool takes_any_start = false);

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_AUDIO_SOURCE_H_
