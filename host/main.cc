// The `corvane` command line: an application of the plugin without Flutter.
#include <alsa/asoundlib.h>
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>

#include "commands/command_line.h"
#include "commands/devices_command.h"
#include "commands/finalize_command.h"
#include "commands/info_command.h"
#include "commands/record_command.h"
#include "commands/repair_wav_command.h"
#include "commands/resume_command.h"
#include "terminal/console.h"
#include "terminal/exit_status.h"
#include "terminal/log_output.h"

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

// The codec's remarks, but for those on its own workings, as lines of GLib's
// log: libav would write them itself, into the live line.
void relay_libav(void* /*context*/, int level, const char* format,
                 va_list values) {
  if (level > AV_LOG_WARNING) return;
  g_autofree gchar* text = g_strdup_vprintf(format, values);
  g_log(corvane::LogOutput::kLibavDomain, G_LOG_LEVEL_MESSAGE, "%s",
        g_strchomp(text));
}

// The same for ALSA, which would write to standard error whatever one of its
// plug-ins has met.
void relay_alsa(const char* /*file*/, int /*line*/, const char* function,
                int error, const char* format, ...) {
  va_list values;
  va_start(values, format);
  g_autofree gchar* text = g_strdup_vprintf(format, values);
  va_end(values);
  const char* const reason = error == 0 ? "" : snd_strerror(error);
  g_log(corvane::LogOutput::kAlsaDomain, G_LOG_LEVEL_MESSAGE, "%s: %s%s%s",
        function, g_strchomp(text), error == 0 ? "" : ": ", reason);
}

// Runs what the command line asks for; returns the exit status.
int run(int argc, char** argv, corvane::Console* console,
        corvane::LogOutput* log) {
  int status = corvane::kExitDone;
  const auto line = corvane::parse_command_line(argc, argv, &status);
  if (!line) return status;
  console->SetVerbosity(line->verbosity);
  if (line->take.no_meter) console->DropLiveLine();
  switch (line->command) {
    case corvane::Command::kRecord:
      return corvane::run_record(line->take, console, log);
    case corvane::Command::kResume:
      return corvane::run_resume(line->take, console, log);
    case corvane::Command::kFinalize:
      return corvane::run_finalize(line->finalize, console, log);
    case corvane::Command::kDevices:
      return corvane::run_devices(line->devices_as_json, console);
    case corvane::Command::kRepairWav:
      return corvane::run_repair_wav(line->repair_wav, console, log);
    case corvane::Command::kInfo:
      return corvane::run_info(line->info, console);
  }
  return corvane::kExitUsage;  // not reached: every command is above
}

}  // namespace

int main(int argc, char** argv) {
  fill_standard_descriptors();
  ignore_write_signals();
  av_log_set_callback(relay_libav);
  snd_lib_error_set_handler(relay_alsa);
  // GLib keeps its log writer to the very end, so neither is ever freed.
  auto* const console = new corvane::Console(STDERR_FILENO);
  auto* const log = new corvane::LogOutput(console);
  log->TakeOverGlib();
  const int status = run(argc, argv, console, log);
  console->Flush();
  return status;
}
