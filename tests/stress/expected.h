// What a plugin is due to answer and to leave on disk, whenever its worker gets
// to it: one thread, plain state, no clock. Takes are mono.
#ifndef CORVANE_TESTS_STRESS_EXPECTED_H_
#define CORVANE_TESTS_STRESS_EXPECTED_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "support/reply.h"

namespace corvane_test {

constexpr int kStressRate = 16000;  // Hz

// Each method takes in one call, in the order of the calls, and returns its
// answer. Sizes of files aren't foreseen: where there are figures, they say 0.
class Expected {
 public:
  Reply Start(const std::string& path);  // where there is no file yet
  Reply Append(size_t bytes);            // whole sample frames
  Reply Pause();
  Reply Resume();
  Reply Stop();
  Reply Cancel();
  Reply ResumePath(const std::string& path);
  Reply FinalizePath(const std::string& path);
  // What dispose does once the queue is empty.
  void Close();

  // AAC frames by file.
  const std::map<std::string, size_t>& frames() const { return frames_; }

 private:
  void Open(const std::string& path);
  void Drain();
  Reply Seal(const std::string& path, int64_t dropped);
  Reply Missing(const std::string& path, const char* what) const;

  std::map<std::string, size_t> frames_;
  bool open_ = false;
  bool paused_ = false;
  std::string path_;
  size_t fed_ = 0;  // sample frames since the codec was opened
  int64_t dropped_ = 0;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_STRESS_EXPECTED_H_
