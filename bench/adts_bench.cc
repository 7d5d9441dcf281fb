// Framing and scanning, each beside its limit: framing beside a copy of the
// payload, a scan beside one pass of 64 KiB positioned reads over the same file
// (in memory, so that no disk is measured).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "adts/frame.h"
#include "adts/scan.h"
#include "support/bytes.h"
#include "support/memory_file.h"

namespace {

using corvane_test::Bytes;

constexpr adts::StreamConfig kConfig = {2, 4, 2};  // 44.1 kHz, stereo
constexpr size_t kPayload = 190;  // bytes; 64 kbit/s with a header
constexpr size_t kFileSize = 32 << 20;

Bytes noise(size_t size) {
  std::mt19937 random(1);
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
  return bytes;
}

void Frame(benchmark::State& state) {
  const Bytes payload = noise(kPayload);
  Bytes frame;
  for (auto _ : state) {
    adts::Frame(kConfig, payload.data(), payload.size(), &frame);
    benchmark::DoNotOptimize(frame.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Frame);

void FrameLimit(benchmark::State& state) {
  const Bytes payload = noise(kPayload);
  Bytes copy(kPayload);
  for (auto _ : state) {
    std::memcpy(copy.data(), payload.data(), kPayload);
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(FrameLimit);

Bytes sound_file() {
  std::mt19937 random(2);
  const Bytes payload = noise(kPayload + 40);
  Bytes file;
  Bytes frame;
  while (file.size() < kFileSize) {
    adts::Frame(kConfig, payload.data(), kPayload - 40 + random() % 80, &frame);
    file.insert(file.end(), frame.begin(), frame.end());
  }
  return file;
}

// A frame, then `pattern` over and over.
Bytes foreign_file(const Bytes& pattern) {
  Bytes file;
  adts::Frame(kConfig, pattern.data(), 0, &file);
  adts::Frame(kConfig, file.data(), 1, &file);
  while (file.size() < kFileSize) {
    file.insert(file.end(), pattern.begin(), pattern.end());
  }
  return file;
}

void ScanFile(benchmark::State& state, const Bytes& content) {
  const corvane_test::MemoryFile file(content);
  for (auto _ : state) {
    adts::Scan scan = {};
    if (adts::ScanFile(file.fd(), &scan) != 0 || scan.valid_end == 0) {
      state.SkipWithError("the file was not scanned");
    }
  }
  state.counters["ns_per_byte"] =
      benchmark::Counter(static_cast<double>(content.size()) * 1e-9,
                         benchmark::Counter::kIsIterationInvariantRate |
                             benchmark::Counter::kInvert);
}

void ScanLimit(benchmark::State& state, const Bytes& content) {
  const corvane_test::MemoryFile file(content);
  std::vector<uint8_t> window(65536);
  for (auto _ : state) {
    off_t at = 0;
    ssize_t got = 1;
    for (; got > 0; at += got) {
      got = pread(file.fd(), window.data(), window.size(), at);
    }
    benchmark::DoNotOptimize(window.data());
  }
}

void register_scan(const std::string& name, const Bytes& content) {
  benchmark::RegisterBenchmark(("Scan/" + name).c_str(), ScanFile, content)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(("ScanLimit/" + name).c_str(), ScanLimit,
                               content)
      ->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  register_scan("sound", sound_file());
  register_scan("random", foreign_file(noise(1 << 20)));
  register_scan("zeros", foreign_file({0x00}));
  register_scan("all_ff", foreign_file({0xFF}));
  register_scan("syncwords", foreign_file({0xFF, 0xF1}));
  // A header at every third byte; where its frame would end there is none.
  register_scan("headers", foreign_file({0xFF, 0xF1, 0x50}));
  // Frames of 8191 bytes that each leave the window near its end.
  register_scan("jumps",
                foreign_file({0xFF, 0xF1, 0x50, 0x83, 0xFF, 0xFF, 0xFC}));
  benchmark::RunSpecifiedBenchmarks();
}
