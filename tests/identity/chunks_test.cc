// However the PCM is cut into chunks, the capture is the same: ffmpeg's.
#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "identity/ffmpeg_command.h"
#include "identity/take.h"
#include "support/chance.h"
#include "support/pcm.h"

namespace {

using corvane_test::Bytes;
using corvane_test::Chunks;
using corvane_test::ExpectSameFile;
using corvane_test::IdentityTest;
using corvane_test::Mixture;
using corvane_test::Slice;
using corvane_test::Take;
using corvane_test::TestSeed;

// Cut `cuts` times where the generator says; some chunks are empty.
std::vector<Bytes> CutAtRandom(const Bytes& pcm, size_t cuts,
                               std::mt19937* random) {
  std::vector<size_t> ends;
  for (size_t i = 0; i < cuts; ++i) ends.push_back((*random)() % pcm.size());
  ends.push_back(pcm.size());
  std::sort(ends.begin(), ends.end());
  std::vector<Bytes> chunks;
  size_t from = 0;
  for (const size_t end : ends) {
    chunks.push_back(Slice(pcm, from, end - from));
    from = end;
  }
  return chunks;
}

class ChunkSizes : public IdentityTest,
                   public testing::WithParamInterface<int> {
 protected:
  ChunkSizes()
      : take_{std::to_string(GetParam()) + " channels",
              Mixture(600, GetParam()), 44100, GetParam(), 96000},
        expected_(corvane_test::EncodedByFfmpeg({take_})[0]) {}

  void ExpectSameInChunksOf(size_t size) {
    ExpectSameFile(Recorded(take_, Chunks(take_.pcm, size)), expected_,
                   "chunks of " + std::to_string(size));
  }

  const Take take_;
  const std::optional<Bytes> expected_;
};

TEST_P(ChunkSizes, DoNotChangeTheCapture) {
  ASSERT_TRUE(expected_);
  // One sample, one sample frame, one AAC frame, each give or take a byte, and
  // everything at once.
  const size_t sample_frame = size_t{2} * GetParam();
  for (const size_t size :
       {size_t{2}, size_t{3}, sample_frame - 1, sample_frame, sample_frame + 1,
        1024 * sample_frame - 1, 1024 * sample_frame, 1024 * sample_frame + 1,
        size_t{997}, take_.pcm.size()}) {
    ExpectSameInChunksOf(size);
  }
}

TEST_P(ChunkSizes, OfOneByteDoNotChangeTheCapture) { ExpectSameInChunksOf(1); }

TEST_P(ChunkSizes, CutAtRandomDoNotChangeTheCapture) {
  const uint32_t seed = TestSeed();
  std::mt19937 random(seed);
  for (const size_t cuts : {1, 2, 5, 20, 20, 300}) {
    ExpectSameFile(
        Recorded(take_, CutAtRandom(take_.pcm, cuts, &random)), expected_,
        std::to_string(cuts) + " random cuts, seed " + std::to_string(seed));
  }
}

INSTANTIATE_TEST_SUITE_P(Channels, ChunkSizes, testing::Values(1, 2, 6),
                         testing::PrintToStringParamName());

}  // namespace
