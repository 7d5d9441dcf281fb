#include "record_command.h"

#include <sys/stat.h>

#include "exit_status.h"
#include "run_take.h"

namespace corvane {
namespace {

constexpr char kExamples[] =
    R"(Files are what libsndfile reads (WAV, FLAC, Ogg, MP3...); rate and channels
come from the file. Raw audio is interleaved s16le and needs -r and -c:

  corvane record -i speech.wav take.aac
  arecord -t raw -f S16_LE -r 48000 -c 1 | corvane record -r 48000 -c 1 take.aac

Ctrl-C (SIGINT) and SIGTERM end the take and seal it. The figures come as JSON
on standard output, all else on standard error. Exit status: 0 done, 1 failed,
2 wrong usage.
)";

// A folder at the capture path would be moved aside like audio.
bool is_folder(const std::string& path) {
  struct stat file = {};
  return stat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode);
}

}  // namespace

CLI::App* add_record_command(CLI::App* app, TakeArguments* arguments) {
  CLI::App* command = app->add_subcommand("record", "Record a new take");
  add_take_arguments(command, "The capture to write", arguments);
  command->footer(kExamples);
  return command;
}

int run_record(const TakeArguments& arguments, Console* console,
               LogOutput* log) {
  int status = kExitDone;
  const auto source = open_source(arguments, console, &status);
  if (source == nullptr) return status;
  if (is_folder(arguments.output)) {
    console->Complain(arguments.output + " is a folder; name a file in it");
    return kExitFailed;
  }
  return run_take(take_options_of(arguments), source.get(), console, log);
}

}  // namespace corvane
