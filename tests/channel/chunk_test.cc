// However PCM is cut into chunks, the file is the same.
#include <gmock/gmock.h>

#include <random>
#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class ChunkTest : public ChannelTest {
 protected:
  // The file of a take whose PCM comes in the given pieces.
  Bytes FileOf(const std::vector<Bytes>& pieces, int channels) {
    const std::string path = Path("take" + std::to_string(++takes_) + ".aac");
    Post("start", CaptureArgs(path, 48000, channels));
    for (const Bytes& piece : pieces) Post("append", piece);
    Stop();
    return ReadFile(path);
  }

 private:
  int takes_ = 0;
};

TEST_F(ChunkTest, AnyChunkSizeGivesTheSameFile) {
  const Bytes pcm = Noise(2500, 2);
  const Bytes whole = FileOf({pcm}, 2);
  EXPECT_EQ(SplitFrames(whole).size(), 4u);
  for (const size_t size : {1, 2, 3, 4, 5, 7, 1023, 4095, 4096, 4097, 8191}) {
    SCOPED_TRACE(size);
    EXPECT_EQ(FileOf(Chunks(pcm, size), 2), whole);
  }
}

TEST_F(ChunkTest, RandomCutsGiveTheSameFile) {
  std::mt19937 random(7);
  for (const int channels : {1, 2, 5, 6}) {
    const Bytes pcm = Noise(3000, channels, channels);
    const Bytes whole = FileOf({pcm}, channels);
    for (int round = 0; round < 5; ++round) {
      SCOPED_TRACE(std::to_string(channels) + " channels, round " +
                   std::to_string(round));
      std::vector<Bytes> pieces;
      for (size_t at = 0; at < pcm.size();) {
        pieces.push_back(Slice(pcm, at, random() % 3000));
        at += pieces.back().size();
      }
      EXPECT_EQ(FileOf(pieces, channels), whole);
    }
  }
}

TEST_F(ChunkTest, AnOddByteWaitsForTheRestOfItsSampleFrame) {
  const Bytes pcm = Noise(2048, 2);
  const Bytes whole = FileOf({pcm}, 2);
  EXPECT_EQ(FileOf({Slice(pcm, 0, 4097), Slice(pcm, 4097)}, 2), whole);
}

TEST_F(ChunkTest, ALoneByteOfASampleIsKeptAndNeverWritten) {
  const std::string path = Path("take.aac");
  Start(path);
  EXPECT_EQ(Append({1}), NullReply());
  EXPECT_EQ(Stop(),
            FileError("VERIFY_FAILED",
                      "capture holds no complete AAC frame (0 bytes)", path));
}

TEST_F(ChunkTest, AnIncompleteLastSampleFrameIsLeftOut) {
  const Bytes pcm = Noise(1500, 6);
  EXPECT_EQ(FileOf({Concat(pcm, Bytes(11, 0xAA))}, 6), FileOf({pcm}, 6));
}

TEST_F(ChunkTest, AFrameIsWrittenAsSoonAsItIsFull) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  Append(Noise(1023));
  EXPECT_EQ(FileSize(path), 0);
  Append({0x12});
  EXPECT_EQ(FileSize(path), 0) << "half a sample is no sample";
  Append({0x34});
  EXPECT_EQ(SplitFrames(ReadFile(path)).size(), 1u);
}

TEST_F(ChunkTest, TheCarrySurvivesAPause) {
  const Bytes first = Noise(1500, 2, 1), second = Noise(1500, 2, 2);
  const std::string paused_between = Path("between.aac");
  Start(paused_between, 48000, 2);
  Append(first);
  Pause();
  Resume();
  Append(second);
  Stop();

  const std::string paused_within = Path("within.aac");
  Start(paused_within, 48000, 2);
  Append(Concat(first, Slice(second, 0, 3)));
  Pause();
  Append(Bytes(1001, 0xAA));
  Resume();
  Append(Slice(second, 3));
  Stop();
  EXPECT_EQ(ReadFile(paused_within), ReadFile(paused_between));
}

TEST_F(ChunkTest, TheCarryEndsWithItsCapture) {
  const Bytes pcm = Noise(1500);
  const Bytes whole = FileOf({pcm}, 1);
  Start(Path("other.aac"));
  Append({0xAA});
  EXPECT_EQ(FileOf({pcm}, 1), whole);
}

TEST_F(ChunkTest, ALongChunkIsEncodedWhole) {
  const std::string path = Path("take.aac");
  const Reply figures = Record(path, Noise(600 * 1024), 48000, 1, SIZE_MAX);
  EXPECT_THAT(figures, Sealed(path, FramesToMs(601, 48000)));
}

}  // namespace
}  // namespace corvane_test
