// The command line that `record` and `resume` share: a capture, and where its
// audio comes from.
#ifndef CORVANE_HOST_TAKE_TAKE_ARGUMENTS_H_
#define CORVANE_HOST_TAKE_TAKE_ARGUMENTS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "audio/audio_source.h"
#include "take/recorder.h"
#include "terminal/console.h"

namespace corvane {

struct TakeArguments {
  std::string output;
  // A file, "-" for raw PCM on standard input, or empty for a sound device.
  std::string input;
  std::optional<std::string> device;  // ALSA's name; its default if not given
  int sample_rate = 0;                // Hz; 0 when not given
  int channels = 0;                   // 0 when not given
  std::optional<int64_t> bit_rate;    // bit/s
  bool realtime = false;
  std::optional<int> chunk_ms;
  double flush_every_s = 1;  // 0: never
  int64_t duration_us = 0;   // of audio; 0: to the source's end
  int64_t split_us = 0;      // of audio in a part; 0: one part
  bool raw = false;          // standard input is samples, however it starts
  bool no_meter = false;     // no live line
  bool force = false;        // do what is refused
};

// The bit rate that -b asks for; without it one that suits the channels.
int64_t bit_rate_of(const TakeArguments& arguments, int channels);

// Why a take in this format would be of no use, as a sentence; empty when it
// would.
std::string objection_to_use(const TakeArguments& arguments,
                             const PcmFormat& format);

// Whether to go on in spite of an objection: with --force, which says so.
// Without it the objection is a complaint.
bool is_overridden(const TakeArguments& arguments, const std::string& objection,
                   Console* console);

// NULL, with the exit status in `status`, when the source cannot be had or
// contradicts the options, which has then been said on the console.
std::unique_ptr<AudioSource> open_source(const TakeArguments& arguments,
                                         Console* console, int* status);

TakeOptions take_options_of(const TakeArguments& arguments,
                            const PcmFormat& format);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_TAKE_ARGUMENTS_H_
