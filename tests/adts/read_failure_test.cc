// Reads that fail, stop short or are interrupted, and files that change size
// under the scan.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "adts/scan.h"
#include "pieces.h"
#include "recorded_reads.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

// What the caller's Scan holds before each call.
constexpr Scan kUntouched = {11, 22, 33, 44, 55};

// Larger than two windows, with foreign bytes that make the scan look ahead.
Bytes LongFile() {
  Bytes file;
  for (int i = 0; i < 40; ++i) {
    file = std::move(file) + FrameOfLength(4000);
    if (i % 8 == 7) file = std::move(file) + Bytes(20, 0x55);
  }
  return std::move(file) + FrameOfLength(100);
}

int Fail(int error) {
  errno = error;
  return -1;
}

class ReadFailure : public testing::Test {
 protected:
  ReadFailure() : file_(LongFile()), source_(file_) {}

  int ScanWith(RecordedReads* recorder) {
    const int result = adts::ScanFile(source_.fd(), &scan_);
    reads_ = recorder->reads().size();
    return result;
  }

  // Scans while `pread` stands in for the system's.
  int ScanWith(RecordedReads::Pread pread) {
    RecordedReads recorder(std::move(pread));
    return ScanWith(&recorder);
  }

  int ScanWithFstat(RecordedReads::AfterFstat after) {
    RecordedReads recorder(RecordedReads::Real, std::move(after));
    return ScanWith(&recorder);
  }

  const Bytes file_;
  const MemoryFile source_;
  Scan scan_ = kUntouched;
  size_t reads_ = 0;
};

TEST_F(ReadFailure, AtAnyReadIsReturnedAndTheScanIsUntouched) {
  ASSERT_EQ(ScanWith(RecordedReads::Real), 0);
  const size_t all = reads_;
  ASSERT_GE(all, 4U);
  for (size_t failing = 0; failing < all; ++failing) {
    for (const int error : {EIO, ESTALE, EAGAIN}) {
      scan_ = kUntouched;
      size_t call = 0;
      const int result =
          ScanWith([&](int fd, void* buffer, size_t count, off_t offset) {
            return call++ == failing
                       ? Fail(error)
                       : RecordedReads::Real(fd, buffer, count, offset);
          });
      EXPECT_EQ(result, error) << "read " << failing;
      EXPECT_EQ(scan_, kUntouched) << "read " << failing;
    }
  }
}

TEST_F(ReadFailure, TheFirstErrorIsTheOneReturned) {
  // Each window gets its first bytes and then fails, each time otherwise: what
  // was read scans well, so the scan goes on to the next window.
  int failures = 0;
  EXPECT_EQ(ScanWith([&](int fd, void* buffer, size_t count, off_t offset) {
              return count == 65536
                         ? RecordedReads::Real(fd, buffer, 12000, offset)
                         : ssize_t{Fail(failures++ == 0 ? EIO : ENXIO)};
            }),
            EIO);
  EXPECT_GE(failures, 2);
  EXPECT_EQ(scan_, kUntouched);
}

TEST_F(ReadFailure, BehindBytesThatWereReadIsReturnedThoughTheyScanWell) {
  // The first window comes in two reads; the second of them fails.
  EXPECT_EQ(ScanWith([](int fd, void* buffer, size_t count, off_t offset) {
              return offset == 0
                         ? RecordedReads::Real(fd, buffer, 12000, offset)
                         : (count < 65536 ? ssize_t{Fail(EIO)}
                                          : RecordedReads::Real(fd, buffer,
                                                                count, offset));
            }),
            EIO);
  EXPECT_EQ(scan_, kUntouched);
}

// A disk that fails may take seconds over each further read.
TEST_F(ReadFailure, EndsASearchAmongForeignBytes) {
  const MemoryFile foreign(Bytes(200000, 0x55));
  RecordedReads recorder([](int fd, void* buffer, size_t count, off_t offset) {
    const bool second_window = offset >= 65536;
    return second_window && count < 65536
               ? ssize_t{Fail(EIO)}
               : RecordedReads::Real(fd, buffer, second_window ? 12000 : count,
                                     offset);
  });
  EXPECT_EQ(adts::ScanFile(foreign.fd(), &scan_), EIO);
  EXPECT_EQ(recorder.reads().size(), 3U)
      << "a whole window, a piece of one, the failure";
}

TEST_F(ReadFailure, WithEintrIsRetriedForEver) {
  size_t call = 0;
  EXPECT_EQ(ScanWith([&](int fd, void* buffer, size_t count, off_t offset) {
              return ++call % 50 != 0
                         ? ssize_t{Fail(EINTR)}
                         : RecordedReads::Real(fd, buffer, count, offset);
            }),
            0);
  EXPECT_EQ(scan_, NaiveScan(file_));
}

TEST_F(ReadFailure, WithEintrBeforeAnErrorHidesNothing) {
  size_t call = 0;
  EXPECT_EQ(ScanWith([&](int, void*, size_t, off_t) {
              return ssize_t{Fail(++call <= 3 ? EINTR : EIO)};
            }),
            EIO);
  EXPECT_EQ(scan_, kUntouched);
}

TEST_F(ReadFailure, ShortReadsOfEverySizeChangeNothing) {
  for (const size_t most : {1U, 2U, 6U, 7U, 8U, 4095U, 65535U}) {
    scan_ = kUntouched;
    EXPECT_EQ(ScanWith([=](int fd, void* buffer, size_t count, off_t offset) {
                return RecordedReads::Real(fd, buffer, std::min(count, most),
                                           offset);
              }),
              0);
    EXPECT_EQ(scan_, NaiveScan(file_)) << most;
  }
}

TEST_F(ReadFailure, AFileThatShrankScansAsIfItsLastBytesWereForeign) {
  const auto size = static_cast<int64_t>(file_.size());
  for (const int64_t left : {0, 1, 6, 7, 4000, 4003, 32020, 65536, 100001}) {
    scan_ = kUntouched;
    EXPECT_EQ(ScanWith([=](int fd, void* buffer, size_t count, off_t offset) {
                const int64_t there = std::max<int64_t>(0, left - offset);
                return RecordedReads::Real(
                    fd, buffer, std::min<size_t>(count, there), offset);
              }),
              0);
    EXPECT_EQ(scan_, NaiveScan(file_.data(), left, size)) << left;
  }
}

TEST_F(ReadFailure, AFileThatGrowsIsSearchedUpToTheEndThatItHad) {
  for (const size_t foreign : {1U, 63U, 64U, 65U, 65530U}) {
    const Bytes before = Bytes(foreign, 0x55) + FrameOfLength(20);
    const auto size = static_cast<int64_t>(before.size());
    const MemoryFile grown(before + Bytes(100, 0x55));
    const RecordedReads recorder(RecordedReads::Real, [=](struct stat* status) {
      status->st_size = size;
      return 0;
    });
    EXPECT_EQ(adts::ScanFile(grown.fd(), &scan_), 0);
    EXPECT_EQ(scan_, NaiveScan(before)) << foreign;
  }
}

// A failure that gives no reason is one all the same: taken for the end of the
// data, a scan would vouch for a file that it has not read.
TEST_F(ReadFailure, WithoutAnErrnoIsEioAndTheScanIsUntouched) {
  EXPECT_EQ(ScanWith([](int, void*, size_t, off_t) { return Fail(0); }), EIO);
  EXPECT_EQ(scan_, kUntouched);
  EXPECT_EQ(ScanWithFstat([](struct stat*) { return Fail(0); }), EIO);
  EXPECT_EQ(scan_, kUntouched);
}

TEST_F(ReadFailure, OfFstatIsReturnedAndNothingIsRead) {
  for (const int error : {EIO, EOVERFLOW, ENOMEM}) {
    EXPECT_EQ(ScanWithFstat([=](struct stat*) { return Fail(error); }), error);
    EXPECT_EQ(scan_, kUntouched);
    EXPECT_EQ(reads_, 0U);
  }
}

TEST_F(ReadFailure, ANegativeFileSizeIsReportedAndNothingIsRead) {
  EXPECT_EQ(ScanWithFstat([](struct stat* status) {
              status->st_size = -5;
              return 0;
            }),
            0);
  EXPECT_EQ(scan_, (Scan{0, -5, 0, 0, 0}));
  EXPECT_EQ(reads_, 0U);
}

TEST_F(ReadFailure, ADirectoryGivesEisdirAndLeavesTheScan) {
  const int fd = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(adts::ScanFile(fd, &scan_), EISDIR);
  EXPECT_EQ(scan_, kUntouched);
  EXPECT_EQ(close(fd), 0);
}

TEST_F(ReadFailure, AWriteOnlyDescriptorGivesEbadf) {
  const std::string path = "/proc/self/fd/" + std::to_string(source_.fd());
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(adts::ScanFile(fd, &scan_), EBADF);
  EXPECT_EQ(scan_, kUntouched);
  EXPECT_EQ(close(fd), 0);
}

TEST_F(ReadFailure, AClosedDescriptorGivesEbadf) {
  EXPECT_EQ(adts::ScanFile(-1, &scan_), EBADF);
  EXPECT_EQ(scan_, kUntouched);
}

}  // namespace
}  // namespace corvane_test
