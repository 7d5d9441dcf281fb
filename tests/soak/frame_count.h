// A long capture's frames counted from the headers' definition, without any of
// the product's code and without having the file in memory.
#ifndef CORVANE_TESTS_SOAK_FRAME_COUNT_H_
#define CORVANE_TESTS_SOAK_FRAME_COUNT_H_

#include <cstdint>
#include <string>

namespace corvane_test {

struct FrameCount {
  int64_t frames = 0;  // whole ones, all of one format, one behind the other
  int64_t bytes = 0;   // that they take up, from the file's first byte
};

// Stops at the first byte that belongs to no such frame, so `bytes` is the
// file's size exactly when there is none.
FrameCount CountFrames(const std::string& path, int channels);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SOAK_FRAME_COUNT_H_
