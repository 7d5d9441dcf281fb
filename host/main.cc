// The `corvane` command line: an application of the plugin without Flutter.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <string>

#include "console.h"
#include "exit_status.h"
#include "finalize_command.h"
#include "log_output.h"
#include "record_command.h"
#include "repair_wav_command.h"
#include "resume_command.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

// A descriptor that the caller left closed would go to the next file opened,
// and the result would be written into the capture. The wrong mode makes each
// use of the placeholder fail, as it would have.
void fill_standard_descriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) >= 0) continue;
    // The lowest free descriptor: fd itself.
    open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

// These come as errors of the calls that meet them, and are reported there.
void ignore_write_signals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
}

// What the command line said.
struct Arguments {
  corvane::TakeArguments record;
  corvane::TakeArguments resume;
  std::string finalize;
  corvane::RepairWavArguments repair_wav;
};

// Parses the command line and runs its command; returns the exit status.
int run(int argc, char** argv, corvane::Console* console,
        corvane::LogOutput* log) {
  CLI::App app("Records audio crash-safely to ADTS files", "corvane");
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  app.require_subcommand(1);
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("corvane: ") + error.what() +
           "\nRun corvane --help, or corvane COMMAND --help, to see how.\n";
  });
  Arguments arguments;
  const CLI::App* record = corvane::add_record_command(&app, &arguments.record);
  const CLI::App* resume = corvane::add_resume_command(&app, &arguments.resume);
  const CLI::App* finalize =
      corvane::add_finalize_command(&app, &arguments.finalize);
  corvane::add_repair_wav_command(&app, &arguments.repair_wav);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? corvane::kExitDone : corvane::kExitUsage;
  }
  if (record->parsed()) {
    return corvane::run_record(arguments.record, console, log);
  }
  if (resume->parsed()) {
    return corvane::run_resume(arguments.resume, console, log);
  }
  if (finalize->parsed()) {
    return corvane::run_finalize(arguments.finalize, console, log);
  }
  return corvane::run_repair_wav(arguments.repair_wav, console, log);
}

}  // namespace

int main(int argc, char** argv) {
  fill_standard_descriptors();
  ignore_write_signals();
  // The codec's remarks about its own workings are not for users.
  av_log_set_level(AV_LOG_WARNING);
  // GLib keeps its log writer to the very end, so neither is ever freed.
  auto* const console = new corvane::Console(STDERR_FILENO);
  auto* const log = new corvane::LogOutput(console);
  log->TakeOverGlib();
  return run(argc, argv, console, log);
}
