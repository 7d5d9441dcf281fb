// The plugin's own functions, taken in as parts, each beside its limit.
#include <benchmark/benchmark.h>
#include <fcntl.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "finalize/finalize_path.h"
#include "recording/append.h"
#include "support/memory_file.h"
#include "worker/open_close.h"

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr int32_t kRate = 44100;

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

// The work of one append behind the queue, a frame's worth of PCM, at the start
// of a take and after more than six hours of it. Silence costs the codec least,
// which shows best what else there is.

constexpr int64_t kManyFrames = 1000000;

class Take {
 public:
  explicit Take(int64_t frames) {
    av_log_set_level(AV_LOG_ERROR);  // the codec's farewell is no result
    // The session closes its descriptor, the file its own.
    const int fd = fcntl(file_.fd(), F_DUPFD_CLOEXEC, 0);
    plugin_.OpenSession(fd, "capture.aac", kRate, 1, 64000);
    for (int64_t i = 0; i < frames; ++i) Append();
  }
  ~Take() {
    plugin_.FinishTasks();
    plugin_.CloseSession("the end of a benchmark");
  }
  Take(const Take&) = delete;
  Take& operator=(const Take&) = delete;

  void Append() {
    held_ = append_chunk(&plugin_, chunk_).kind == kReplyEmpty && held_;
  }
  bool held() const { return held_; }

 private:
  const std::vector<uint8_t> chunk_ =
      std::vector<uint8_t>(kAacFrameSize * kBytesPerSample);
  const corvane_test::MemoryFile file_;
  bool held_ = true;
  PluginState plugin_;
};

void append_to(Take* take, benchmark::State& state) {
  for (auto _ : state) take->Append();
  if (!take->held()) state.SkipWithError("an append failed");
}

void AppendAtFirst(benchmark::State& state) {
  Take take(10);  // by then the codec is open
  append_to(&take, state);
}
BENCHMARK(AppendAtFirst)->Iterations(1000);

void AppendAfterMany(benchmark::State& state) {
  static Take take(kManyFrames);  // once for all repetitions
  append_to(&take, state);
}
BENCHMARK(AppendAfterMany)->Iterations(1000);

}  // namespace
