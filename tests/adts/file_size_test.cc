// The size that a file has when its scan begins, and what is there when it is
// read: another program may write to it or cut it meanwhile.
#include <gtest/gtest.h>

#include <cstdint>

#include "adts/scan.h"
#include "pieces.h"
#include "recorded_reads.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

// Scans `bytes` as a file that says it has `size` bytes.
Scan ScanAs(int64_t size, const Bytes& bytes, size_t* reads) {
  const MemoryFile file(bytes);
  RecordedReads recorder(RecordedReads::Real, [=](struct stat* status) {
    status->st_size = size;
    return 0;
  });
  Scan scan = {};
  EXPECT_EQ(adts::ScanFile(file.fd(), &scan), 0);
  *reads = recorder.reads().size();
  return scan;
}

// Taken for confirmed, the frame would be found torn, and its head cut off.
TEST(FileSize, AFrameThatIsConfirmedOnlyBehindItStaysForeign) {
  const Bytes grown = Hex("55 55") + FrameOfLength(20) + FrameOfLength(20);
  size_t reads = 0;
  EXPECT_EQ(ScanAs(21, grown, &reads), (Scan{0, 21, 0, 0, 0}));
}

// To the end of what was once the file, at a read a byte, it would take hours.
TEST(FileSize, ASearchEndsWhereNothingIsLeftToRead) {
  size_t reads = 0;
  EXPECT_EQ(ScanAs(1 << 20, Bytes(100, 0x55), &reads),
            (Scan{0, 1 << 20, 0, 0, 0}));
  EXPECT_LE(reads, 64U);
}

// What cannot be read is no header, whatever was read before.
TEST(FileSize, BytesThatAreGoneAreNoPartOfAHeader) {
  const Bytes shrunk = FrameOfLength(20) + Hex("FF F1 4C 40");
  size_t reads = 0;
  EXPECT_EQ(ScanAs(100, shrunk, &reads),
            NaiveScan(shrunk.data(), static_cast<int64_t>(shrunk.size()), 100));
}

}  // namespace
}  // namespace corvane_test
