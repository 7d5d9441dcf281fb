// A second, slow ADTS scanner, written from the rules alone: the whole file
// lies in memory, nothing is buffered, nothing is clever. Tests and fuzzers
// hold adts::ScanFile against it.
#ifndef CORVANE_TESTS_SUPPORT_NAIVE_SCAN_H_
#define CORVANE_TESTS_SUPPORT_NAIVE_SCAN_H_

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "adts/scan.h"

namespace corvane_test {

// What a scan must report for a file that says it is `size` bytes long and of
// which only data[0..present) can be read (they differ when a file shrinks
// under the scan).
adts::Scan NaiveScan(const uint8_t* data, size_t present, int64_t size);

// The same for an ordinary file, all of which can be read.
adts::Scan NaiveScan(const std::vector<uint8_t>& bytes);

bool SameScan(const adts::Scan& a, const adts::Scan& b);

}  // namespace corvane_test

namespace adts {

inline bool operator==(const Scan& a, const Scan& b) {
  return corvane_test::SameScan(a, b);
}

// Lets GoogleTest show both scans field by field.
void PrintTo(const Scan& scan, std::ostream* out);

}  // namespace adts

#endif  // CORVANE_TESTS_SUPPORT_NAIVE_SCAN_H_
