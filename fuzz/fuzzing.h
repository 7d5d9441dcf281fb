// What the fuzz targets share. A target is a program of one function: libFuzzer
// calls it with whatever it makes up, replay_main.cc with files.
#ifndef CORVANE_FUZZ_FUZZING_H_
#define CORVANE_FUZZ_FUZZING_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "support/bytes.h"

// Returns 0. What is wrong ends the process, which is how libFuzzer learns it.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace corvane_fuzz {

using corvane_test::Bytes;

inline void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::cerr << "fuzz target: " << what << std::endl;
  abort();
}

// An input read from front to back. Behind its end there are zeros.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : at_(data), end_(data + size) {}

  bool AtEnd() const { return at_ == end_; }
  uint8_t Byte() { return AtEnd() ? 0 : *at_++; }
  unsigned Word() {
    const unsigned low = Byte();
    return low | static_cast<unsigned>(Byte()) << 8;
  }
  // The next `count` bytes, or what is left of them.
  Bytes Take(size_t count) {
    const uint8_t* from = at_;
    at_ += std::min<size_t>(count, end_ - at_);
    return Bytes(from, at_);
  }

 private:
  const uint8_t* at_;
  const uint8_t* const end_;
};

}  // namespace corvane_fuzz

#endif  // CORVANE_FUZZ_FUZZING_H_
