// Every small file over an alphabet of header pieces scans as the naive scanner
// says: the corners that nobody would think of are among them.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "pieces.h"

namespace corvane_test {
namespace {

// Scans every string of exactly `length` letters between the two ends; stops
// at the first difference. Returns the number of files tried.
int TryAll(const std::vector<Bytes>& alphabet, size_t length,
           const Bytes& before, const Bytes& after) {
  std::vector<size_t> letters(length, 0);
  for (int tried = 0;;) {
    Bytes file = before;
    for (const size_t letter : letters) {
      file.insert(file.end(), alphabet[letter].begin(), alphabet[letter].end());
    }
    ExpectLikeNaive(std::move(file) + after);
    ++tried;
    if (testing::Test::HasFailure()) return tried;
    size_t digit = 0;
    while (digit < length && ++letters[digit] == alphabet.size()) {
      letters[digit++] = 0;
    }
    if (digit == length) return tried;
  }
}

int TryAllUpTo(const std::vector<Bytes>& alphabet, size_t longest,
               const Bytes& before = {}, const Bytes& after = {}) {
  int tried = 0;
  for (size_t length = 0; length <= longest; ++length) {
    tried += TryAll(alphabet, length, before, after);
  }
  return tried;
}

TEST(SmallFiles, OfHeaderPiecesScanLikeTheNaiveScanner) {
  const std::vector<Bytes> alphabet = {
      Hex("FF F1 50 80 01 1F FC AA"),        // a whole frame
      Hex("FF F9 4C 40 01 5F FF AA AA AA"),  // MPEG-2, 48000 Hz, four blocks
      Hex("FF F0 50 80 01 5F FC AA AA AA"),  // with CRC, as short as can be
      Hex("FF F0 50 80 01 3F FC"),           // with CRC, one byte too short
      Hex("FF F1 50 80 01 9F FC"),           // needs five bytes more
      Hex("FF F1 50 80 03 1F FC"),           // needs 17 bytes more
      Hex("FF F1"),
      Hex("FF"),
      Hex("50 80 01 1F FC"),  // a header without its syncword
      Hex("AA"),
  };
  EXPECT_EQ(TryAllUpTo(alphabet, 5), 111111);
}

TEST(SmallFiles, OfSingleBytesScanLikeTheNaiveScanner) {
  // With these, eight bytes can be a frame: FF F1 01 00 01 00 00 ...
  const std::vector<Bytes> alphabet = {Hex("FF"), Hex("F1"), Hex("01"),
                                       Hex("00")};
  const Bytes frame = FrameOfLength(8);
  EXPECT_EQ(TryAllUpTo(alphabet, 8), 87381);
  EXPECT_EQ(TryAllUpTo(alphabet, 6, frame), 5461);
  EXPECT_EQ(TryAllUpTo(alphabet, 6, {}, frame), 5461);
  EXPECT_EQ(TryAllUpTo(alphabet, 6, frame, frame), 5461);
}

}  // namespace
}  // namespace corvane_test
