// What the process itself takes up, sampled as the take goes on.
#ifndef CORVANE_TESTS_SOAK_PROCESS_LOG_H_
#define CORVANE_TESTS_SOAK_PROCESS_LOG_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

namespace corvane_test {

struct ProcessSample {
  double audio_s = 0;        // recorded so far
  double run_s = 0;          // since the start, on the clock
  int64_t resident_kib = 0;  // memory that is in use, program text included
  size_t heap_kib = 0;       // of it, what malloc has given out
  size_t descriptors = 0;    // open ones
};

class ProcessLog {
 public:
  // Each sample also goes to the file at `path`, so that a run that dies leaves
  // its figures. Makes room for `expected` samples beforehand.
  ProcessLog(const std::string& path, size_t expected);

  void Sample(double audio_s);

  const std::vector<ProcessSample>& samples() const { return samples_; }

  // Memory is judged against its value at the first sample behind a minute:
  // one of audio and, where the run is that long, one on the clock as well.
  // Appends to `complaints`.
  void Judge(std::vector<std::string>* complaints) const;

 private:
  using Clock = std::chrono::steady_clock;

  void JudgeFrom(const ProcessSample& reference,
                 std::vector<std::string>* complaints) const;

  const Clock::time_point start_ = Clock::now();
  std::ofstream file_;
  std::vector<ProcessSample> samples_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SOAK_PROCESS_LOG_H_
