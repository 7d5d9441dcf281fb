#include "take/run_take.h"

#include <glib-unix.h>

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

TakeResult record_take(const TakeOptions& options, AudioSource* source,
                       Console* console, LogOutput* log) {
  Engine engine;
  show_log_lines(&engine, log);
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

int run_take(const TakeOptions& options, AudioSource* source, Console* console,
             LogOutput* log) {
  const TakeResult take = record_take(options, source, console, log);
  bool failed = report_problems(options, *source, take, console);
  if (take.sealed) {
    failed |= !print_figures(options, *source, take, console);
  }
  return failed ? kExitFailed : kExitDone;
}

}  // namespace corvane
