// Ends the test program, with the name of the run, when a run doesn't end.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_WATCHDOG_H_
#define CORVANE_TESTS_FAULTS_SWEEP_WATCHDOG_H_

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>
#include <thread>

namespace corvane_test {

class Watchdog {
 public:
  Watchdog() : thread_([this] { Watch(); }) {}
  ~Watchdog() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      done_ = true;
    }
    wake_.notify_one();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  // The run before has ended, and `run` begins.
  void Begin(const std::string& run) {
    const std::lock_guard<std::mutex> lock(mutex_);
    run_ = run;
    deadline_ = Clock::now() + kLimit;
  }

 private:
  using Clock = std::chrono::steady_clock;
  // A run takes milliseconds; a busy machine may hold it up for long.
  static constexpr std::chrono::seconds kLimit{60};

  void Watch() {
    std::unique_lock<std::mutex> lock(mutex_);
    while (!wake_.wait_until(lock, deadline_, [this] { return done_; })) {
      if (Clock::now() >= deadline_) {
        std::cerr << "hangs: " << run_ << std::endl;
        abort();
      }
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  bool done_ = false;
  std::string run_;
  Clock::time_point deadline_ = Clock::now() + kLimit;
  std::thread thread_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_WATCHDOG_H_
