#include "take/run_take.h"

#include <unistd.h>

#include <csignal>
#include <optional>
#include <utility>

#include "engine/engine.h"
#include "take/plugin_call.h"
#include "take/progress.h"
#include "take/take_json.h"
#include "take/take_report.h"
#include "take/take_signals.h"
#include "terminal/exit_status.h"
#include "terminal/keyboard.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

void tell_pause(const Recorder& recorder, std::optional<bool> is_paused,
                Console* console) {
  if (!is_paused) return;
  console->Note((*is_paused ? "paused at " : "goes on at ") +
                clock_tenths(recorder.PositionMs()));
}

void tell_mark(std::optional<int64_t> mark_ms, Console* console) {
  if (mark_ms) console->Note("marked " + clock_tenths(*mark_ms));
}

void on_signal(int signal, Recorder* recorder, Console* console) {
  if (signal == SIGUSR1) {
    tell_pause(*recorder, recorder->TogglePause(), console);
  } else if (signal == SIGUSR2) {
    tell_mark(recorder->Mark(), console);
  } else {
    recorder->Stop(TakeEnd::kSignal);
  }
}

constexpr char kKeys[] =
    "keys: space pauses and goes on, m marks the moment, q stops and seals";

void on_key(char key, Recorder* recorder, Console* console) {
  if (key == ' ') tell_pause(*recorder, recorder->TogglePause(), console);
  if (key == 'm') tell_mark(recorder->Mark(), console);
  if (key == 'q') recorder->Stop(TakeEnd::kKey);
  if (key == '?') console->Line(kKeys);
}

TakeResult record_take(const TakeOptions& options, AudioSource* source,
                       CaptureLock lock, Console* console, LogOutput* log) {
  Engine engine;
  std::optional<int64_t> skipped_bytes;
  show_log_lines(&engine, log, &skipped_bytes);
  TakeResult take;
  {
    Progress progress(console, {options.capture_path, source->format(),
                                options.bit_rate, source->total_frames()});
    Recorder recorder(&engine, source, options, std::move(lock), &progress);
    const TakeSignals signals(
        [&](int signal) { on_signal(signal, &recorder, console); });
    const Keyboard keyboard(STDIN_FILENO, console,
                            [&](char key) { on_key(key, &recorder, console); });
    take = recorder.Run();
  }
  engine.Shutdown();
  log->Flush();
  if (!take.parts.empty() && take.parts.back().sealed) {
    take.parts.back().sealed->skipped_bytes = skipped_bytes;
  }
  return take;
}

}  // namespace

int run_take(const TakeOptions& options, AudioSource* source, CaptureLock lock,
             Console* console, LogOutput* log) {
  const TakeResult take =
      record_take(options, source, std::move(lock), console, log);
  bool failed = report_problems(options, *source, take, console);
  if (take.has_sealed()) {
    failed |= !print_figures(options, *source, take, console);
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace corvane
