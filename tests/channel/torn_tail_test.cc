// Damage at the end and in the middle of a capture, as "stop" finds it.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

class TornTailTest : public ChannelTest {
 protected:
  TornTailTest() {
    Start(path_);
    Append(Noise(3 * 1024));
    Pause();
    whole_ = ReadFile(path_);
    frames_ = SplitFrames(whole_);
    TakeTranscript();
  }

  // Stops, and expects `repairs` between the start and the end of the seal.
  void ExpectSealed(const std::vector<std::string>& repairs,
                    const Reply& figures, size_t written = 4,
                    int64_t skipped = 0) {
    Stop();
    std::vector<std::string> expected = {ClosedLine("stop", path_, written),
                                         SealStartLine(path_)};
    expected.insert(expected.end(), repairs.begin(), repairs.end());
    expected.push_back(SealEndLine(figures, skipped));
    expected.push_back(Answer("stop", figures));
    EXPECT_EQ(TakeTranscript(), expected);
  }

  Reply WholeFigures(size_t frames, size_t bytes) const {
    return Figures(path_, FramesToMs(frames, 48000), bytes);
  }

  const std::string path_ = Path("take.aac");
  Bytes whole_;
  std::vector<Bytes> frames_;
};

TEST_F(TornTailTest, AWholeFileIsLeftAlone) {
  ExpectSealed({}, WholeFigures(4, whole_.size()));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(TornTailTest, EveryCutThroughTheLastFrameIsCutBackToItsStart) {
  const size_t last = FrameOffset(frames_, 3);
  for (const size_t left : {size_t{1}, size_t{2}, size_t{3}, size_t{6},
                            size_t{7}, size_t{8}, whole_.size() - last - 1}) {
    SCOPED_TRACE(left);
    TruncateFile(path_, last + left);
    ExpectSealed({DroppingLine(left, path_)}, WholeFigures(3, last));
    EXPECT_EQ(ReadFile(path_), Slice(whole_, 0, last));

    TruncateFile(path_, 0);
    Start(path_);
    Append(Noise(3 * 1024));
    Pause();
    TakeTranscript();
  }
}

TEST_F(TornTailTest, AFrameThatRunsPastTheEndIsCutOff) {
  Bytes torn = frames_[0];
  torn.resize(torn.size() - 100);
  AppendToFile(path_, torn);
  ExpectSealed({DroppingLine(torn.size(), path_)},
               WholeFigures(4, whole_.size()));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(TornTailTest, TheBeginningOfAHeaderIsCutOff) {
  AppendToFile(path_, {0xFF, 0xF1, 0x50});
  ExpectSealed({DroppingLine(3, path_)}, WholeFigures(4, whole_.size()));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(TornTailTest, ALoneFirstByteOfASyncwordIsCutOff) {
  AppendToFile(path_, {0xFF});
  ExpectSealed({DroppingLine(1, path_)}, WholeFigures(4, whole_.size()));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(TornTailTest, AFewForeignBytesAtTheEndAreKept) {
  const Bytes foreign = {0, 0, 0};
  AppendToFile(path_, foreign);
  ExpectSealed({}, WholeFigures(4, whole_.size() + 3));
  EXPECT_EQ(ReadFile(path_), Concat(whole_, foreign));
}

TEST_F(TornTailTest, ManyForeignBytesAtTheEndAreKept) {
  const Bytes foreign(5000, 0xAA);
  AppendToFile(path_, foreign);
  ExpectSealed({}, WholeFigures(4, whole_.size() + 5000));
  EXPECT_EQ(ReadFile(path_), Concat(whole_, foreign));
}

TEST_F(TornTailTest, ForeignBytesBetweenFramesAreReportedAndKept) {
  AppendToFile(path_, Bytes(10, 0xAA));
  Resume();
  Append(Noise(1024));
  Pause();
  TakeTranscript();
  const Bytes all = ReadFile(path_);
  ExpectSealed({ForeignLine(path_, 10)}, WholeFigures(6, all.size()), 6, 10);
  EXPECT_EQ(ReadFile(path_), all);
}

TEST_F(TornTailTest, BothKindsOfDamageAreReportedTheCutFirst) {
  AppendToFile(path_, Bytes(10, 0xAA));
  AppendToFile(path_, whole_);
  AppendToFile(path_, {0xFF, 0xF1});
  const size_t trusted = 2 * whole_.size() + 10;
  ExpectSealed({DroppingLine(2, path_), ForeignLine(path_, 10)},
               WholeFigures(8, trusted), 4, 10);
  EXPECT_EQ(FileSize(path_), static_cast<int64_t>(trusted));
}

TEST_F(TornTailTest, ATornFirstFrameLeavesNothingToSeal) {
  TruncateFile(path_, 50);
  const Reply error = FileError(
      "VERIFY_FAILED", "capture holds no complete AAC frame (0 bytes)", path_);
  Stop();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("stop", path_, 4), SealStartLine(path_),
                          DroppingLine(50, path_), Failed("stop", error),
                          Answer("stop", error)));
  EXPECT_EQ(FileSize(path_), 0);
}

}  // namespace
}  // namespace corvane_test
