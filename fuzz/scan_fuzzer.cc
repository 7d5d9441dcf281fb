// The scanner against the naive one, on arbitrary bytes as a whole file and as
// the end of one whose front fills the scanner's window.
#include <sstream>

#include "adts/scan.h"
#include "fuzzing.h"
#include "support/adts_header.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_fuzz {
namespace {

constexpr size_t kWindowSize = 65536;
constexpr size_t kLongestFrame = 8191;

void ScanLikeNaive(const Bytes& bytes) {
  static corvane_test::MemoryFile file;
  file.Set(bytes);
  const adts::Scan expected = corvane_test::NaiveScan(bytes);
  adts::Scan actual{-1, -1, -1, -1, -1};
  Require(adts::ScanFile(file.fd(), &actual) == 0, "a file cannot be scanned");
  std::ostringstream both;
  PrintTo(expected, &both);
  both << " is due, came ";
  PrintTo(actual, &both);
  Require(actual == expected, both.str());
}

// Whole frames of `size` bytes in all.
Bytes Front(size_t size) {
  Bytes front;
  while (front.size() < size) {
    const size_t left = size - front.size();
    corvane_test::HeaderFields fields;
    fields.frame_length = std::min(left, kLongestFrame);
    // What is left then must still be a frame, or nothing.
    if (left > kLongestFrame && left < kLongestFrame + 8) {
      fields.frame_length -= 8;
    }
    const Bytes header = HeaderBytes(fields);
    front.insert(front.end(), header.begin(), header.end());
    front.resize(front.size() - header.size() + fields.frame_length);
  }
  return front;
}

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane_fuzz;
  ScanLikeNaive(Bytes(data, data + size));
  // The window's edge falls on the first byte, the second, ... of the input.
  Input input(data, size);
  Bytes shifted = Front(kWindowSize - input.Byte());
  shifted.insert(shifted.end(), data, data + size);
  ScanLikeNaive(shifted);
  return 0;
}
