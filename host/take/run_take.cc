#include "take/run_take.h"

#include <glib-unix.h>

#include <array>
#include <csignal>
#include <functional>
#include <utility>

#include "engine/engine.h"
#include "take/plugin_call.h"
#include "take/progress.h"
#include "take/take_report.h"
#include "terminal/exit_status.h"

namespace corvane {
namespace {

constexpr std::array<int, 3> kStopSignals = {SIGINT, SIGTERM, SIGHUP};

// What the parent has told to ignore stays ignored, as under nohup(1) and in a
// shell's background.
bool is_ignored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 &&
         action.sa_handler == SIG_IGN;
}

// The signals that end a take, as events of the main loop, for as long as this
// lives.
class StopSignals {
 public:
  explicit StopSignals(std::function<void()> on_signal)
      : on_signal_(std::move(on_signal)) {
    for (size_t i = 0; i < kStopSignals.size(); ++i) {
      if (is_ignored(kStopSignals[i])) continue;
      ids_[i] = g_unix_signal_add(kStopSignals[i], OnSignal, this);
    }
  }
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;
  // One that comes again while the result is told must not keep it back.
  ~StopSignals() {
    sigset_t stop_signals = {};
    sigset_t before = {};
    sigemptyset(&stop_signals);
    for (const int signal : kStopSignals) sigaddset(&stop_signals, signal);
    pthread_sigmask(SIG_BLOCK, &stop_signals, &before);
    for (const guint id : ids_) {
      if (id != 0) g_source_remove(id);
    }
    for (const int signal : kStopSignals) std::signal(signal, SIG_IGN);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }

 private:
  static gboolean OnSignal(gpointer self) {
    static_cast<StopSignals*>(self)->on_signal_();
    return G_SOURCE_CONTINUE;
  }

  const std::function<void()> on_signal_;
  std::array<guint, kStopSignals.size()> ids_ = {};
};

TakeResult record_take(const TakeOptions& options, AudioSource* source,
                       CaptureLock* lock, Console* console, LogOutput* log) {
  Engine engine;
  std::optional<int64_t> skipped_bytes;
  show_log_lines(&engine, log, &skipped_bytes);
  TakeResult take;
  {
    Progress progress(console, options.capture_path,
                      source->format().sample_rate, source->total_frames());
    Recorder recorder(&engine, source, options, lock, &progress);
    const StopSignals signals([&recorder] { recorder.Stop(TakeEnd::kSignal); });
    take = recorder.Run();
  }
  engine.Shutdown();
  log->Flush();
  if (take.sealed) take.sealed->skipped_bytes = skipped_bytes;
  return take;
}

}  // namespace

int run_take(const TakeOptions& options, AudioSource* source, CaptureLock* lock,
             Console* console, LogOutput* log) {
  const TakeResult take = record_take(options, source, lock, console, log);
  bool failed = report_problems(options, *source, take, console);
  if (take.sealed) {
    failed |= !print_figures(options, *source, take, console);
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace corvane
