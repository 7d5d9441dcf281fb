// The main function of the benchmarks that run the plugin's own code: its log
// lines are part of the work, a terminal is not, and what its workers post is
// delivered on this thread.
#include <benchmark/benchmark.h>
#include <glib.h>

namespace {

GLogWriterOutput drop(GLogLevelFlags /*level*/, const GLogField* /*fields*/,
                      gsize /*count*/, gpointer /*data*/) {
  return G_LOG_WRITER_HANDLED;
}

}  // namespace

int main(int argc, char** argv) {
  g_log_set_writer_func(drop, nullptr, nullptr);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  if (g_main_context_acquire(nullptr) == FALSE) return 1;
  benchmark::RunSpecifiedBenchmarks();
  g_main_context_release(nullptr);
}
