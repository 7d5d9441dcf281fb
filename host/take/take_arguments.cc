#include "take/take_arguments.h"

#include <unistd.h>

#include "terminal/exit_status.h"

namespace corvane {
namespace {

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

}  // namespace

std::unique_ptr<AudioSource> open_source(const TakeArguments& arguments,
                                         Console* console, int* status) {
  if (arguments.input == "-") {
    return open_raw_input(STDIN_FILENO,
                          {arguments.sample_rate, arguments.channels});
  }
  std::string error;
  std::unique_ptr<AudioSource> source =
      open_audio_file(arguments.input, &error);
  *status = kExitFailed;
  if (source != nullptr) {
    error = contradiction(arguments, source->format());
    *status = kExitUsage;
  }
  if (error.empty()) return source;
  console->Complain(arguments.input + ": " + error);
  return nullptr;
}

TakeOptions take_options_of(const TakeArguments& arguments) {
  TakeOptions options;
  options.capture_path = arguments.output;
  options.bit_rate = arguments.bit_rate;
  options.chunk_ms = arguments.chunk_ms;
  options.realtime = arguments.realtime;
  return options;
}

}  // namespace corvane
