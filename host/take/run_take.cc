#include "take/run_take.h"

#include <unistd.h>

#include <algorithm>
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

constexpr char kTooEarly[] = "nothing is recorded yet, as no audio has come";

void toggle_pause(Recorder* recorder, Console* console) {
  if (!recorder->has_begun()) return console->Note(kTooEarly);
  const auto is_paused = recorder->TogglePause();
  if (!is_paused) return;
  console->Note((*is_paused ? "paused at " : "goes on at ") +
                clock_tenths(recorder->PositionMs()));
}

void mark(Recorder* recorder, Console* console) {
  if (!recorder->has_begun()) return console->Note(kTooEarly);
  const auto mark_ms = recorder->Mark();
  if (mark_ms) console->Note("marked " + clock_tenths(*mark_ms));
}

void on_signal(int signal, Recorder* recorder, Console* console) {
  if (signal == SIGUSR1) {
    toggle_pause(recorder, console);
  } else if (signal == SIGUSR2) {
    mark(recorder, console);
  } else {
    recorder->Stop(TakeEnd::kSignal);
  }
}

constexpr char kKeys[] =
    "keys: space pauses and goes on, m marks the moment, q stops and seals";

void on_key(char key, Recorder* recorder, Console* console) {
  if (key == ' ') toggle_pause(recorder, console);
  if (key == 'm') mark(recorder, console);
  if (key == 'q') recorder->Stop(TakeEnd::kKey);
  if (key == '?') console->Line(kKeys);
}

// Whichever ends first, where either has an end.
std::optional<int64_t> frames_ahead(const TakeOptions& options,
                                    const AudioSource& source) {
  const auto total = source.total_frames();
  const auto limit = options.feed.take_frames;
  if (!total || !limit) return total ? total : limit;
  return std::min(*total, *limit);
}

TakeResult record_take(const TakeOptions& options, AudioSource* source,
                       CaptureLock lock, Console* console, LogOutput* log) {
  Engine engine;
  std::optional<int64_t> skipped_bytes;
  show_log_lines(&engine, log, &skipped_bytes);
  TakeResult take;
  {
    Progress progress(console,
                      {options.capture_path, source->format(), options.bit_rate,
                       frames_ahead(options, *source)});
    Recorder recorder(&engine, source, options, std::move(lock), &progress);
    const TakeSignals signals(
        [&](int signal) { on_signal(signal, &recorder, console); });
    std::optional<Keyboard> keyboard;
    // A key that nobody sees work is worse than none.
    if (console->verbosity() != Verbosity::kQuiet) {
      keyboard.emplace(STDIN_FILENO, console,
                       [&](char key) { on_key(key, &recorder, console); });
    }
    take = recorder.Run();
  }
  engine.Shutdown();
  log->Flush();
  for (PartResult& part : take.parts) {
    if (part.sealed) part.sealed->skipped_bytes = skipped_bytes;
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
