#include "take/take_arguments.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "audio/microphone.h"
#include "looks/dead_wav.h"
#include "take/loss_line.h"
#include "terminal/exit_status.h"
#include "terminal/waiting_line.h"
#include "terminal/way_out.h"

namespace corvane {
namespace {

constexpr int kUnplayableChannels = 3;
constexpr int64_t kLeastBitRate = 8000;  // bit/s a channel
constexpr int64_t kSamplesPerAacFrame = 1024;

// At least one.
int64_t frames_in(int64_t us, const PcmFormat& format) {
  return std::max<int64_t>(1, us * format.sample_rate / 1'000'000);
}

// The next frame's audio begins the next part, so no codec has to fill one up.
int64_t whole_aac_frames(int64_t frames) {
  return std::max<int64_t>(1, frames / kSamplesPerAacFrame) *
         kSamplesPerAacFrame;
}

// Empty unless -r or -c contradict what the file itself says.
std::string contradiction(const TakeArguments& arguments,
                          const PcmFormat& format) {
  const bool rate_fits =
      arguments.sample_rate == 0 || arguments.sample_rate == format.sample_rate;
  const bool channels_fit =
      arguments.channels == 0 || arguments.channels == format.channels;
  if (rate_fits && channels_fit) return "";
  return "the file holds " + std::to_string(format.channels) +
         " channel(s) at " + std::to_string(format.sample_rate) +
         " Hz; leave out -r and -c, which are for raw audio";
}

// The plugin would refuse the format as well, but late: raw audio may be a long
// time in coming.
std::unique_ptr<AudioSource> open_raw(const TakeArguments& arguments,
                                      Console* console, int* status) {
  auto source = open_raw_input(
      STDIN_FILENO, {arguments.sample_rate, arguments.channels}, arguments.raw);
  const std::string objection = objection_to_format(*source);
  if (objection.empty()) return source;
  console->Complain(source->name() + ": " + objection);
  *status = kExitUsage;
  return nullptr;
}

std::unique_ptr<AudioSource> open_device(const TakeArguments& arguments,
                                         Console* console, int* status) {
  const std::string name = arguments.device.value_or("");
  DeviceError error;
  const auto tell = [console](const Loss& loss) {
    console->Line(line_of(loss));
  };
  {
    const WaitingLine waiting(console, "waiting for " + device_title(name));
    auto source = open_microphone(
        name, {arguments.sample_rate, arguments.channels}, tell, &error);
    if (source != nullptr) return source;
  }
  console->Complain(device_title(name) + ": " + error.text);
  *status = error.is_of_format ? kExitUsage : kExitFailed;
  return nullptr;
}

}  // namespace

std::unique_ptr<AudioSource> open_source(const TakeArguments& arguments,
                                         Console* console, int* status) {
  if (arguments.input.empty()) return open_device(arguments, console, status);
  if (arguments.input == "-") return open_raw(arguments, console, status);
  std::string error = objection_to_dead_wav(arguments.input);
  std::unique_ptr<AudioSource> source;
  if (error.empty()) source = open_audio_file(arguments.input, &error);
  *status = kExitFailed;
  if (source != nullptr) {
    error = contradiction(arguments, source->format());
    *status = kExitUsage;
  }
  if (error.empty()) {
    error = shortage_of_wav(arguments.input);
    if (!error.empty()) {
      console->Complain(arguments.input + ": warning: " + error);
    }
    return source;
  }
  console->Complain(arguments.input + ": " + error);
  return nullptr;
}

int64_t bit_rate_of(const TakeArguments& arguments, int channels) {
  if (arguments.bit_rate) return *arguments.bit_rate;
  if (channels <= 2) return 64000;
  return channels <= 4 ? 128000 : 192000;
}

std::string objection_to_use(const TakeArguments& arguments,
                             const PcmFormat& format) {
  if (format.channels == kUnplayableChannels) {
    return "ADTS has no way to say how three channels are laid out, so no "
           "player could play them; record 4 channels with one silent, or 2";
  }
  const int64_t bit_rate = bit_rate_of(arguments, format.channels);
  if (bit_rate >= kLeastBitRate * format.channels) return "";
  std::string question;
  if (bit_rate < 1000 && bit_rate * 1000 >= kLeastBitRate * format.channels) {
    question = "; was " + std::to_string(bit_rate * 1000) + " meant (-b " +
               std::to_string(bit_rate) + "k)?";
  }
  return std::to_string(bit_rate) + " bit/s would ruin the take: below " +
         std::to_string(kLeastBitRate) + " bit/s a channel no speech is left" +
         question;
}

bool is_overridden(const TakeArguments& arguments, const std::string& objection,
                   Console* console) {
  console->Complain(objection + (arguments.force
                                     ? "; done all the same (--force)"
                                     : "; --force does it all the same"));
  return arguments.force;
}

TakeOptions take_options_of(const TakeArguments& arguments,
                            const PcmFormat& format) {
  TakeOptions options;
  options.capture_path = arguments.output;
  options.bit_rate = bit_rate_of(arguments, format.channels);
  options.feed.chunk_ms = arguments.chunk_ms;
  options.feed.realtime = arguments.realtime;
  if (arguments.duration_us > 0) {
    options.feed.take_frames = frames_in(arguments.duration_us, format);
  }
  if (arguments.split_us > 0) {
    options.feed.part_frames =
        whole_aac_frames(frames_in(arguments.split_us, format));
  }
  // Rounded up: only 0 means never.
  options.flush_every_us =
      static_cast<int64_t>(std::ceil(arguments.flush_every_s * 1e6));
  return options;
}

}  // namespace corvane
