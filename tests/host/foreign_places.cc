#include "host/foreign_places.h"

#include <gtest/gtest.h>

#include "looks/foreign_runs.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {

void ExpectForeignPlaces(const std::string& path, const Bytes& content,
                         const std::string& how) {
  const adts::Scan scan = NaiveScan(content);
  const corvane::ForeignRuns runs =
      corvane::foreign_runs_in(corvane::RegularFile(path), scan);
  EXPECT_EQ(runs.bytes, scan.skipped_bytes) << how;
  EXPECT_EQ(runs.count, static_cast<int64_t>(runs.listed.size())) << how;
  Bytes frames;
  int64_t at = 0;
  for (const corvane::ForeignRun& run : runs.listed) {
    ASSERT_GE(run.bytes, 1) << how;
    ASSERT_GE(run.offset, at) << how;
    ASSERT_LE(run.offset + run.bytes, scan.valid_end) << how;
    frames = Concat(frames, Slice(content, static_cast<size_t>(at),
                                  static_cast<size_t>(run.offset - at)));
    at = run.offset + run.bytes;
  }
  frames = Concat(frames, Slice(content, static_cast<size_t>(at),
                                static_cast<size_t>(scan.valid_end - at)));
  const auto size = static_cast<int64_t>(frames.size());
  const adts::Scan expected = {size, size, scan.samples, scan.sample_rate, 0};
  EXPECT_EQ(NaiveScan(frames), expected) << how;
}

}  // namespace corvane_test
