// An append of 20 ms as the application's main thread sees it: what it holds
// that thread up, and how long its answer takes, beside a bare copy, lock,
// notify and wake-up.
#include "appends.h"

#include <benchmark/benchmark.h>
#include <flutter_linux/flutter_linux.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <future>
#include <mutex>
#include <vector>

#include "plugin/method_table.h"

namespace {

// Times what the main thread can't do meanwhile, append by append. A median,
// for the system takes the processor away within some of them.
template <typename What, typename Between>
void measure(benchmark::State& state, What* appends, Between between) {
  std::vector<double> times_us;
  for (auto _ : state) {
    between();
    appends->Send();
    times_us.push_back(appends->held_up_us());
    state.SetIterationTime(appends->held_up_us() / 1e6);
  }
  const auto middle =
      times_us.begin() + static_cast<ptrdiff_t>(times_us.size() / 2);
  std::nth_element(times_us.begin(), middle, times_us.end());
  state.counters["median_us"] = *middle;
}

// Each as soon as the one before is answered.
template <typename What>
void BackToBack(benchmark::State& state) {
  What appends;
  measure(state, &appends, [&] { appends.WaitForAnswers(); });
}
BENCHMARK_TEMPLATE(BackToBack, Appends)->Name("Append")->UseManualTime();
BENCHMARK_TEMPLATE(BackToBack, BareAppends)
    ->Name("AppendLimit")
    ->UseManualTime();

// Each when a microphone would bring it: the thread behind the queue sleeps,
// and both processors have been idle or with others in between.
template <typename What>
void Paced(benchmark::State& state) {
  What appends;
  measure(state, &appends, [&] {
    appends.WaitForAnswers();
    bool due = false;
    const auto on_due = [](gpointer flag) -> gboolean {
      *static_cast<bool*>(flag) = true;
      return G_SOURCE_REMOVE;
    };
    g_timeout_add(kChunkMs, on_due, &due);
    while (!due) g_main_context_iteration(nullptr, TRUE);
  });
}
BENCHMARK_TEMPLATE(Paced, RecordedAppends)
    ->Name("PacedAppend")
    ->Iterations(15)
    ->UseManualTime();
BENCHMARK_TEMPLATE(Paced, BareAppends)
    ->Name("PacedAppendLimit")
    ->Iterations(15)
    ->UseManualTime();

// Keeps the worker from its queue, which holds `waiting` tasks, while it lives.
class HeldUp {
 public:
  HeldUp(PluginState* plugin, size_t waiting) {
    Queue(plugin, 1, [this, go_on = go_on_.get_future().share()] {
      taken_.set_value();
      go_on.wait();
    });
    taken_.get_future().wait();
    Queue(plugin, waiting, [] {});
  }
  ~HeldUp() { go_on_.set_value(); }
  HeldUp(const HeldUp&) = delete;
  HeldUp& operator=(const HeldUp&) = delete;

 private:
  static void Queue(PluginState* plugin, size_t count,
                    const std::function<void()>& task) {
    const std::lock_guard<std::mutex> lock(plugin->mutex);
    plugin->tasks.insert(plugin->tasks.end(), count, task);
    plugin->cv.notify_one();
  }

  std::promise<void> taken_;
  std::promise<void> go_on_;
};

void AppendBehind(benchmark::State& state) {
  Appends appends;
  const HeldUp held_up(appends.plugin(), static_cast<size_t>(state.range(0)));
  measure(state, &appends, [] {});
}
BENCHMARK(AppendBehind)
    ->ArgName("tasks")
    ->Arg(0)
    ->Arg(1000)
    ->Arg(100000)
    ->Iterations(1000)
    ->UseManualTime();

template <typename What>
void QueueAndReply(benchmark::State& state) {
  What appends;
  for (auto _ : state) {
    appends.Send();
    appends.WaitForAnswers();
  }
}
BENCHMARK_TEMPLATE(QueueAndReply, Appends)->Name("Reply")->UseRealTime();
BENCHMARK_TEMPLATE(QueueAndReply, BareAppends)
    ->Name("ReplyLimit")
    ->UseRealTime();

}  // namespace
