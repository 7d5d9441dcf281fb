// Files and figures that need more than 32 bits. What is read of them is made
// up: nobody has that much disk for a test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "adts/scan.h"
#include "adts/stream_config.h"
#include "pieces.h"
#include "recorded_reads.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

constexpr int kLength = 8191;  // of each frame, the largest there is

// So many that the last pieces read begin behind 4 GiB.
constexpr int64_t kFrames = (int64_t{1} << 32) / kLength + 40;

constexpr Scan kAllFrames = {kFrames * kLength, kFrames* kLength,
                             kFrames * 4096, 96000, 0};

// Scans a file of such frames, 4 blocks each, of which only the headers are
// there; `torn` bytes of another follow.
Scan ScanFrames(int64_t torn) {
  HeaderFields fields;
  fields.frame_length = kLength;
  fields.frequency_index = 0;
  fields.raw_data_blocks = 3;
  const Bytes header = HeaderBytes(fields);
  const int64_t size = kFrames * kLength + torn;
  const MemoryFile file(Bytes{1});
  const RecordedReads recorder(
      [&](int, void* buffer, size_t count, off_t offset) {
        auto* bytes = static_cast<uint8_t*>(buffer);
        const int64_t end =
            std::min(offset + static_cast<int64_t>(count), size);
        for (int64_t at = offset / kLength * kLength; at < end; at += kLength) {
          for (int64_t i = 0; i < 7; ++i) {
            if (at + i >= offset && at + i < end) {
              bytes[at + i - offset] = header[static_cast<size_t>(i)];
            }
          }
        }
        return static_cast<ssize_t>(std::max<int64_t>(end - offset, 0));
      },
      [&](struct stat* status) {
        status->st_size = size;
        return 0;
      });
  Scan scan = {};
  EXPECT_EQ(adts::ScanFile(file.fd(), &scan), 0);
  return scan;
}

TEST(LargeFile, IsScannedBehindItsFirst4GiB) {
  EXPECT_EQ(ScanFrames(0), kAllFrames);
}

TEST(LargeFile, IsCutBehindItsFirst4GiB) {
  EXPECT_EQ(ScanFrames(kLength - 1), kAllFrames);
}

TEST(LargeFile, MayHoldMoreSamplesThan31BitsCount) {
  HeaderFields fields;
  fields.frame_length = 8;
  fields.frequency_index = 12;
  fields.raw_data_blocks = 3;
  const Bytes frame = FrameBytes(fields);
  const size_t frames = (size_t{1} << 31) / 4096 + 1;
  Bytes file;
  for (size_t i = 0; i < frames; ++i) {
    file.insert(file.end(), frame.begin(), frame.end());
  }
  const auto size = static_cast<int64_t>(file.size());
  EXPECT_EQ(ScanBytes(file),
            (Scan{size, size, static_cast<int64_t>(frames) * 4096, 7350, 0}));
}

TEST(LargeFile, LastsToTheMillisecond) {
  // A double would miss both by some hundred.
  EXPECT_EQ((Scan{0, 0, INT64_MAX / 1000, 1, 0}.DurationMs()),
            INT64_MAX / 1000 * 1000);
  EXPECT_EQ((Scan{0, 0, INT64_MAX / 1000, 96000, 0}.DurationMs()),
            INT64_MAX / 1000 * 1000 / 96000);
}

TEST(LargeFile, LastsLongerThan31BitsCount) {
  const int64_t samples = (int64_t{1} << 31) * 96;
  EXPECT_EQ((Scan{0, 0, samples, 96000, 0}.DurationMs()), int64_t{1} << 31);
  EXPECT_EQ((Scan{0, 0, 1 << 30, INT32_MAX, 0}.DurationMs()), 500);
}

TEST(LargeNumber, IsNoRateAndNoLayout) {
  for (const int number : {INT32_MAX, INT32_MIN, INT32_MIN + 1}) {
    EXPECT_EQ(adts::FrequencyIndexOf(number), -1) << number;
    EXPECT_FALSE(adts::IsChannelConfig(number)) << number;
  }
}

}  // namespace
}  // namespace corvane_test
