// The plugin's own functions, taken in as parts, each beside its limit.
#include <benchmark/benchmark.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "finalize/finalize_path.h"
#include "messenger.h"
#include "plugin/method_table.h"
#include "session/append.h"

namespace {

using Clock = std::chrono::steady_clock;

double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

constexpr int32_t kRate = 44100;
constexpr size_t kChunkFrames = 882;  // 20 ms
constexpr size_t kChunkSize = kChunkFrames * 4;

// Conversion of one full frame, beside a copy to as many bytes.

struct FrameToFill {
  explicit FrameToFill(int32_t channels)
      : encoder(-1, "", kRate, channels, 64000, nullptr),
        pcm(kAacFrameSize * encoder.bytes_per_frame, 0x12) {
    encoder.frame.reset(av_frame_alloc());
    encoder.frame->nb_samples = kAacFrameSize;
    encoder.frame->format = AV_SAMPLE_FMT_FLTP;
    av_channel_layout_default(&encoder.frame->ch_layout, channels);
    av_frame_get_buffer(encoder.frame.get(), 0);
  }

  AdtsAacEncoder encoder;
  std::vector<uint8_t> pcm;
};

void Convert(benchmark::State& state) {
  FrameToFill fill(static_cast<int32_t>(state.range(0)));
  for (auto _ : state) {
    fill.encoder.frame_fill = 0;
    PcmCursor cursor = {fill.pcm.data(), kAacFrameSize, 0};
    deinterleave(&fill.encoder, &cursor);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Convert)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6);

void ConvertLimit(benchmark::State& state) {
  const size_t samples = kAacFrameSize * static_cast<size_t>(state.range(0));
  const std::vector<float> in(samples, 0.5F);
  std::vector<float> out(samples);
  for (auto _ : state) {
    std::memcpy(out.data(), in.data(), samples * sizeof(float));
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(ConvertLimit)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6);

// Normalising of a path, beside a copy of it.

constexpr char kPath[] = "/home/user/./recordings/2024//take/../take 12.aac";

void NormalizePath(benchmark::State& state) {
  const std::string path = kPath;
  for (auto _ : state) benchmark::DoNotOptimize(normalize_path(path));
}
BENCHMARK(NormalizePath);

void NormalizePathLimit(benchmark::State& state) {
  const std::string path = kPath;
  for (auto _ : state) benchmark::DoNotOptimize(std::string(path));
}
BENCHMARK(NormalizePathLimit);

// An append of 20 ms while the thread behind the queue sleeps, as it does when
// a microphone sets the pace: what it holds up the main thread, and how long
// its answer takes, beside a bare copy, lock, notify and wake-up.

// Calls dispatch() as the plugin does. The capture is paused: the PCM is
// counted and thrown away, for the codec is not what is measured here.
class Appends {
 public:
  Appends() : messenger_(corvane::messenger_new()) {
    g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
    channel_ =
        fl_method_channel_new(messenger_, "bench", FL_METHOD_CODEC(codec));
    fl_method_channel_set_method_call_handler(channel_, OnCall, this, nullptr);
    plugin_.session.fd = 0;
    plugin_.session.paused = true;
    const std::vector<uint8_t> chunk(kChunkSize, 0x12);
    g_autoptr(FlValue) pcm = fl_value_new_uint8_list(chunk.data(), kChunkSize);
    message_ = FL_METHOD_CODEC_GET_CLASS(codec)->encode_method_call(
        FL_METHOD_CODEC(codec), "append", pcm, nullptr);
  }
  ~Appends() {
    plugin_.FinishTasks();
    corvane::messenger_shutdown(messenger_);
    g_bytes_unref(message_);
    g_object_unref(channel_);
    g_object_unref(messenger_);
  }
  Appends(const Appends&) = delete;
  Appends& operator=(const Appends&) = delete;

  // To the answer.
  void Run() {
    bool answered = false;
    corvane::messenger_deliver(messenger_, "bench", message_,
                               [&](GBytes*) { answered = true; });
    while (!answered) g_main_context_iteration(nullptr, TRUE);
  }

  double held_up_s() const { return held_up_s_; }  // by the last call

 private:
  static void OnCall(FlMethodChannel*, FlMethodCall* call, gpointer data) {
    auto* self = static_cast<Appends*>(data);
    const Clock::time_point start = Clock::now();
    dispatch(call, &self->plugin_);
    self->held_up_s_ = seconds_since(start);
  }

  FlBinaryMessenger* messenger_;
  FlMethodChannel* channel_;
  GBytes* message_;
  double held_up_s_ = 0;
  PluginState plugin_;
};

class BareAppends {
 public:
  ~BareAppends() {
    Post({});
    worker_.join();
  }

  void Run() {
    answered_ = false;
    const Clock::time_point start = Clock::now();
    Post(std::vector<uint8_t>(chunk_));
    held_up_s_ = seconds_since(start);
    while (!answered_) g_main_context_iteration(nullptr, TRUE);
  }

  double held_up_s() const { return held_up_s_; }

 private:
  void Post(std::vector<uint8_t> chunk) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      queue_.push_back(std::move(chunk));
    }
    cv_.notify_one();
  }

  void Answer() {
    for (;;) {
      std::unique_lock<std::mutex> lock(mutex_);
      cv_.wait(lock, [this] { return !queue_.empty(); });
      const std::vector<uint8_t> chunk = std::move(queue_.front());
      queue_.pop_front();
      lock.unlock();
      if (chunk.empty()) return;
      g_main_context_invoke(nullptr, OnAnswer, this);
    }
  }

  static gboolean OnAnswer(gpointer data) {
    static_cast<BareAppends*>(data)->answered_ = true;
    return G_SOURCE_REMOVE;
  }

  const std::vector<uint8_t> chunk_ = std::vector<uint8_t>(kChunkSize, 0x12);
  bool answered_ = false;  // main thread
  double held_up_s_ = 0;
  std::mutex mutex_;  // guards the queue
  std::condition_variable cv_;
  std::deque<std::vector<uint8_t>> queue_;
  std::thread worker_ = std::thread([this] { Answer(); });
};

template <typename What>
void MainThread(benchmark::State& state) {
  What appends;
  for (auto _ : state) {
    appends.Run();
    state.SetIterationTime(appends.held_up_s());
  }
}
BENCHMARK_TEMPLATE(MainThread, Appends)->Name("Append")->UseManualTime();
BENCHMARK_TEMPLATE(MainThread, BareAppends)
    ->Name("AppendLimit")
    ->UseManualTime();

template <typename What>
void QueueAndReply(benchmark::State& state) {
  What appends;
  for (auto _ : state) appends.Run();
}
BENCHMARK_TEMPLATE(QueueAndReply, Appends)->Name("Reply")->UseRealTime();
BENCHMARK_TEMPLATE(QueueAndReply, BareAppends)
    ->Name("ReplyLimit")
    ->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  // What the workers post must run here.
  if (g_main_context_acquire(nullptr) == FALSE) return 1;
  benchmark::RunSpecifiedBenchmarks();
  g_main_context_release(nullptr);
}
