#include "record_command.h"

#include <glib-unix.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <memory>
#include <utility>

#include "audio_source.h"
#include "engine.h"
#include "progress.h"
#include "recorder.h"
#include "take_report.h"

namespace corvane {
namespace {

constexpr char kRecordExamples[] =
    R"(Files are what libsndfile reads (WAV, FLAC, Ogg, MP3...); rate and channels
come from the file. Raw audio is interleaved s16le and needs -r and -c:

  corvane record -i speech.wav take.aac
  arecord -t raw -f S16_LE -r 48000 -c 1 | corvane record -r 48000 -c 1 take.aac

Ctrl-C (SIGINT) and SIGTERM end the take and seal it. The figures come as JSON
on standard output, all else on standard error. Exit status: 0 done, 1 failed,
2 wrong usage.
)";

// SIGINT and SIGTERM as an event of the main loop, for as long as this lives.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> on_signal)
      : on_signal_(std::move(on_signal)),
        ids_{g_unix_signal_add(SIGINT, OnSignal, this),
             g_unix_signal_add(SIGTERM, OnSignal, this)} {}
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  ~StopSignals() {
    for (const guint id : ids_) g_source_remove(id);
  }

 private:
  static gboolean OnSignal(gpointer self) {
    static_cast<StopSignals*>(self)->on_signal_();
    return G_SOURCE_CONTINUE;
  }

  const std::function<void()> on_signal_;
  const guint ids_[2];
};

// What the options alone tell to be wrong.
void check_usage(const RecordOptions& options) {
  if (options.input != "-") return;
  if (options.sample_rate == 0 || options.channels == 0) {
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

std::unique_ptr<AudioSource> open_source(const RecordOptions& options,
                                         std::string* error) {
  if (options.input == "-") {
    return open_raw_input(STDIN_FILENO,
                          {options.sample_rate, options.channels});
  }
  return open_audio_file(options.input, error);
}

// Empty unless -r or -c contradict what the file itself says.
std::string contradiction(const RecordOptions& options,
                          const PcmFormat& format) {
  const bool rate_fits =
      options.sample_rate == 0 || options.sample_rate == format.sample_rate;
  const bool channels_fit =
      options.channels == 0 || options.channels == format.channels;
  if (rate_fits && channels_fit) return "";
  return "the file holds " + std::to_string(format.channels) +
         " channel(s) at " + std::to_string(format.sample_rate) +
         " Hz; leave out -r and -c, which are for raw audio";
}

// A folder at the capture path would be moved aside like audio.
bool is_folder(const std::string& path) {
  struct stat file = {};
  return stat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode);
}

TakeResult record_take(const TakeOptions& options, AudioSource* source,
                       Console* console, LogOutput* log) {
  Engine engine;
  engine.ListenToLog(
      [log](const std::string& level, const std::string& message) {
        log->OnEvent(level, message);
      });
  TakeResult take;
  {
    Progress progress(console, options.capture_path,
                      source->format().sample_rate, source->total_frames());
    Recorder recorder(&engine, source, options, &progress);
    const StopSignals signals([&recorder] { recorder.Stop(); });
    take = recorder.Run();
  }
  engine.Shutdown();
  log->Flush();
  return take;
}

}  // namespace

CLI::App* add_record_command(CLI::App* app, RecordOptions* options) {
  // Validators would write their numbers into the help as well.
  const auto at_least_1 = CLI::Range(1, INT32_MAX).description("");
  CLI::App* command = app->add_subcommand("record", "Record a new take");
  command->add_option("OUT.aac", options->output, "The capture to write")
      ->type_name("")
      ->required();
  command
      ->add_option("-i", options->input,
                   "Audio file; without it, or as -, raw stdin")
      ->type_name("FILE");
  command->add_option("-r", options->sample_rate, "Sample rate of raw audio")
      ->type_name("HZ")
      ->check(at_least_1);
  command->add_option("-c", options->channels, "Channels of raw audio, 1 to 6")
      ->type_name("N")
      ->check(at_least_1);
  command->add_option("-b", options->bit_rate, "AAC bits a second [64000]")
      ->type_name("BPS")
      ->check(CLI::Range(int64_t{1}, INT64_MAX).description(""));
  command->add_flag("--realtime", options->realtime,
                    "Feed no faster than the audio plays");
  command
      ->add_option("--chunk-ms", options->chunk_ms,
                   "Audio in one append, 1 to 1000 [20]")
      ->type_name("MS")
      ->check(CLI::Range(1, 1000).description(""));
  command->footer(kRecordExamples);
  command->callback([options] { check_usage(*options); });
  return command;
}

int run_record(const RecordOptions& options, Console* console, LogOutput* log) {
  std::string error;
  const std::unique_ptr<AudioSource> source = open_source(options, &error);
  if (source == nullptr) {
    console->Complain(options.input + ": " + error);
    return kExitFailed;
  }
  error = contradiction(options, source->format());
  if (!error.empty()) {
    console->Complain(options.input + ": " + error);
    return kExitUsage;
  }
  if (is_folder(options.output)) {
    console->Complain(options.output + " is a folder; name a file in it");
    return kExitFailed;
  }
  const TakeOptions take_options = {options.output, options.bit_rate,
                                    options.chunk_ms, options.realtime};
  const TakeResult take = record_take(take_options, source.get(), console, log);
  bool failed = report_problems(take_options, *source, take, console);
  if (take.sealed) {
    failed |= !print_figures(take_options, *source, take, console);
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace corvane
