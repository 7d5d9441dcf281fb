#include "soak/process_log.h"

#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "support/files.h"

namespace corvane_test {
namespace {

constexpr double kMinute = 60;
constexpr int64_t kToleranceKib = 1024;

// The second number of statm counts pages.
int64_t ResidentKib() {
  std::ifstream file("/proc/self/statm");
  int64_t total = 0;
  int64_t resident = 0;
  if (!(file >> total >> resident)) {
    throw std::runtime_error("cannot read /proc/self/statm");
  }
  return resident * sysconf(_SC_PAGESIZE) / 1024;
}

// In all arenas, and in mappings of their own.
size_t HeapKib() {
  const struct mallinfo2 heap = mallinfo2();
  return (heap.uordblks + heap.hblkhd) / 1024;
}

std::string At(const ProcessSample& sample) {
  return std::to_string(static_cast<int64_t>(sample.audio_s)) +
         " s of audio (" + std::to_string(static_cast<int64_t>(sample.run_s)) +
         " s of run)";
}

}  // namespace

ProcessLog::ProcessLog(const std::string& path, size_t expected) : file_(path) {
  samples_.resize(expected);  // so that the room is resident from the start
  samples_.clear();
  file_ << "audio_s,run_s,resident_kib,heap_kib,descriptors" << std::endl;
}

void ProcessLog::Sample(double audio_s) {
  const std::chrono::duration<double> run = Clock::now() - start_;
  samples_.push_back({audio_s, run.count(), ResidentKib(), HeapKib(),
                      OpenDescriptors().size()});
  const ProcessSample& now = samples_.back();
  file_ << now.audio_s << ',' << now.run_s << ',' << now.resident_kib << ','
        << now.heap_kib << ',' << now.descriptors << std::endl;
}

void ProcessLog::Judge(std::vector<std::string>* complaints) const {
  bool audio_judged = false;
  bool clock_judged = false;
  for (const ProcessSample& sample : samples_) {
    if (!audio_judged && sample.audio_s >= kMinute) {
      audio_judged = true;
      JudgeFrom(sample, complaints);
    }
    if (!clock_judged && sample.run_s >= kMinute) {
      clock_judged = true;
      JudgeFrom(sample, complaints);
    }
  }
  if (!audio_judged) complaints->push_back("no sample behind the first minute");
  if (!file_) complaints->push_back("the samples were not written out");
}

// Names the first sample that is out of bounds: the rest says the same.
void ProcessLog::JudgeFrom(const ProcessSample& reference,
                           std::vector<std::string>* complaints) const {
  const auto behind = static_cast<size_t>(&reference - samples_.data());
  for (size_t i = behind; i < samples_.size(); ++i) {
    const ProcessSample& now = samples_[i];
    const int64_t change = now.resident_kib - reference.resident_kib;
    if (std::abs(change) > kToleranceKib) {
      complaints->push_back("resident memory changed by " +
                            std::to_string(change) + " KiB from " +
                            At(reference) + " to " + At(now));
      break;
    }
  }
  for (const ProcessSample& now : samples_) {
    if (now.descriptors != reference.descriptors) {
      complaints->push_back(std::to_string(now.descriptors) +
                            " descriptors were open at " + At(now) + ", " +
                            std::to_string(reference.descriptors) + " at " +
                            At(reference));
      break;
    }
  }
}

}  // namespace corvane_test
