// "finalizeWavOnly" over the channel, call to answer, on a file of each size.
// 44 bytes are written and synced whatever the size, so the times must agree.
#include <benchmark/benchmark.h>
#include <engine/engine.h>
#include <fcntl.h>
#include <flutter_linux/flutter_linux.h>
#include <unistd.h>

#include <cstdint>
#include <string>

namespace {

// A file of zeros without blocks of its own, in the working directory, whose
// disk is the one that is measured.
class SparseFile {
 public:
  explicit SparseFile(int64_t size) {
    const int fd = open(path(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    is_good_ = fd >= 0 && ftruncate(fd, size) == 0;
    if (fd >= 0) is_good_ = close(fd) == 0 && is_good_;
  }
  ~SparseFile() { unlink(path()); }
  SparseFile(const SparseFile&) = delete;
  SparseFile& operator=(const SparseFile&) = delete;

  bool is_good() const { return is_good_; }
  static const char* path() { return "wav_repair_bench.wav"; }

 private:
  bool is_good_;
};

// Whether the plugin answered with success.
bool repair(corvane::Engine* engine, FlValue* args) {
  bool answered = false;
  bool succeeded = false;
  engine->Invoke("finalizeWavOnly", args, [&](FlMethodResponse* response) {
    answered = true;
    succeeded = FL_IS_METHOD_SUCCESS_RESPONSE(response);
  });
  engine->IterateUntil([&] { return answered; });
  return succeeded;
}

void RepairWav(benchmark::State& state) {
  const SparseFile file(state.range(0));
  corvane::Engine engine;
  g_autoptr(FlValue) args = fl_value_new_map();
  fl_value_set_string_take(args, "wavPath", fl_value_new_string(file.path()));
  fl_value_set_string_take(args, "sampleRate", fl_value_new_int(48000));
  fl_value_set_string_take(args, "channels", fl_value_new_int(2));
  bool held = file.is_good();
  for (auto _ : state) held = held && repair(&engine, args);
  if (!held) state.SkipWithError("the file was not repaired");
}
BENCHMARK(RepairWav)
    ->ArgName("bytes")
    ->Arg(1 << 10)
    ->Arg(int64_t{1} << 32)
    ->UseRealTime()
    ->Unit(benchmark::kMicrosecond);

}  // namespace
