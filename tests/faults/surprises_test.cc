// What follows, to an author's surprise, when a call fails at an unlucky
// moment. Each is told in docs/recovery.md.
#include "faults_fixture.h"

namespace corvane_test {
namespace {

const Bytes kAudioThere = {'o', 'l', 'd'};
const Bytes kOlderAudio = {'o', 'l', 'd', 'e', 'r'};

class SurpriseFaultsTest : public FaultsTest {
 protected:
  // A take of `pcm` whose second frame is torn behind its first 10 bytes,
  // because the disk was full for a moment.
  std::string TornTake(const Bytes& pcm) {
    std::string path = Begin();
    Fault torn(On("write").Nth(2).Accept(10));
    Fault disk_full(On("write").Nth(3).Fail(ENOSPC));
    EXPECT_EQ(Append(pcm).code, "WRITE_FAILED");
    return path;
  }

  // Stops that take, of which `frames` should have been written. The torn frame
  // is made up with bytes of those behind it, which are hidden; returns how
  // many bytes are left of the last one.
  size_t ExpectFramesHidden(const std::string& path,
                            const std::vector<Bytes>& frames) {
    const size_t missing = frames[1].size() - 10;
    size_t taken = 0;
    size_t hidden = 0;
    while (taken < missing) {
      taken += frames.at(2 + hidden++).size();
    }
    EXPECT_GT(hidden, 0U);
    EXPECT_THAT(Stop(),
                Sealed(path, FramesToMs(frames.size() - hidden, 48000)));
    return taken - missing;
  }

  const std::string path_ = Path("take.aac");
  const std::string slot_ = Path("take.orphan.aac");
};

TEST_F(SurpriseFaultsTest, GoingOnBehindAFailedWriteHidesTheNextFrames) {
  const Bytes pcm = Sine(6 * kFrameSamples);
  const std::vector<Bytes> frames = UndisturbedFrames(pcm);
  const std::string path = TornTake(Slice(pcm, 0, 3 * 2048));
  EXPECT_EQ(Append(Slice(pcm, 3 * 2048)), NullReply());
  const size_t foreign = ExpectFramesHidden(path, frames);
  EXPECT_THAT(LogLines(), testing::Contains(ForeignLine(path, foreign)));
}

// Writing works again by then, and the codec still held two frames.
TEST_F(SurpriseFaultsTest, StoppingBehindAFailedWriteMayHideWhatTheCodecHeld) {
  const Bytes pcm = Noise(3 * kFrameSamples);
  const std::vector<Bytes> frames = UndisturbedFrames(pcm);
  ASSERT_EQ(frames.size(), 4U);
  ExpectFramesHidden(TornTake(pcm), frames);
}

// "pause" has no failure to answer, so only the log tells the application.
TEST_F(SurpriseFaultsTest, FramesBehindAWriteThatFailedInAPauseAreCutOff) {
  const Bytes loud = Noise(2 * kFrameSamples);
  const std::vector<Bytes> frames = UndisturbedFrames(loud);
  const std::string path = Begin();
  EXPECT_EQ(Append(loud), NullReply());
  {
    Fault torn(On("write").Nth(1).Accept(10));
    Fault disk_full(On("write").Nth(2).Fail(ENOSPC));
    EXPECT_EQ(Pause(), NullReply());
  }
  const auto torn_end = static_cast<int64_t>(frames[0].size() + 10);
  EXPECT_EQ(FileSize(path), torn_end);
  Resume();
  EXPECT_EQ(Append(Silence(2 * kFrameSamples)), NullReply());
  EXPECT_GT(FileSize(path), torn_end) << "a whole frame was written";
  EXPECT_THAT(Stop(), Sealed(path, FramesToMs(1, 48000)));
  EXPECT_EQ(ReadFile(path), frames[0]);
}

TEST_F(SurpriseFaultsTest, OrphanWhoseStatFailsIsReplaced) {
  WriteFile(slot_, kOlderAudio);
  WriteFile(path_, kAudioThere);
  Fault fault(On("stat").Path(slot_).Fail(EACCES));
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(ReadFile(slot_), kAudioThere);
  EXPECT_EQ(ListDir(Path("")), (Lines{"take.aac", "take.orphan.aac"}));
}

TEST_F(SurpriseFaultsTest, SlotTakenBetweenLookAndRenameIsReplaced) {
  WriteFile(path_, kAudioThere);
  Fault race(
      On("rename").Before([&](PluginCall&) { WriteFile(slot_, kOlderAudio); }));
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(ReadFile(slot_), kAudioThere);
  EXPECT_EQ(ListDir(Path("")), (Lines{"take.aac", "take.orphan.aac"}));
}

}  // namespace
}  // namespace corvane_test
