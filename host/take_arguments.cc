#include "take_arguments.h"

#include <unistd.h>

#include "exit_status.h"

namespace corvane {
namespace {

// What the options alone tell to be wrong.
void check_usage(const TakeArguments& arguments) {
  if (arguments.input != "-") return;
  if (arguments.sample_rate == 0 || arguments.channels == 0) {
    throw CLI::ValidationError(
        "raw audio on standard input needs its rate and channels, "
        "as in -r 48000 -c 1; a file is named with -i");
  }
  if (isatty(STDIN_FILENO) == 1) {
    throw CLI::ValidationError(
        "standard input is a terminal; pipe raw s16le audio in, or "
        "name a file with -i");
  }
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

void add_source_options(CLI::App* command, TakeArguments* arguments) {
  // Validators would write their numbers into the help as well.
  const auto at_least_1 = CLI::Range(1, INT32_MAX).description("");
  command
      ->add_option("-i", arguments->input,
                   "Audio file; without it, or as -, raw stdin")
      ->type_name("FILE");
  command->add_option("-r", arguments->sample_rate, "Sample rate of raw audio")
      ->type_name("HZ")
      ->check(at_least_1);
  command
      ->add_option("-c", arguments->channels, "Channels of raw audio, 1 to 6")
      ->type_name("N")
      ->check(at_least_1);
}

}  // namespace

void add_take_arguments(CLI::App* command, const std::string& output_help,
                        TakeArguments* arguments) {
  command->add_option("OUT.aac", arguments->output, output_help)
      ->type_name("")
      ->required();
  add_source_options(command, arguments);
  command->add_option("-b", arguments->bit_rate, "AAC bits a second [64000]")
      ->type_name("BPS")
      ->check(CLI::Range(int64_t{1}, INT64_MAX).description(""));
  command->add_flag("--realtime", arguments->realtime,
                    "Feed no faster than the audio plays");
  command
      ->add_option("--chunk-ms", arguments->chunk_ms,
                   "Audio in one append, 1 to 1000 [20]")
      ->type_name("MS")
      ->check(CLI::Range(1, 1000).description(""));
  command->callback([arguments] { check_usage(*arguments); });
}

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
