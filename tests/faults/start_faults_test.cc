// "start" with its look at the path, its move aside and its open made to fail.
#include <fcntl.h>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

const Bytes kOldAudio = {'o', 'l', 'd'};

class StartFaultsTest : public FaultsTest {
 protected:
  Reply NotPreserved() const {
    return FileError("WRITE_FAILED",
                     "existing audio at target could not be preserved", path_);
  }

  // Nothing was started: the plugin holds nothing, and says so.
  void ExpectNoCapture() {
    EXPECT_EQ(HeldNow(), Held());
    EXPECT_EQ(Append(Sine(1)),
              PlainError("NOT_RECORDING",
                         "append of 2 bytes with no open recording"));
  }

  const std::string path_ = Path("take.aac");
  const std::string slot_ = Path("take.orphan.aac");
};

TEST_F(StartFaultsTest, CaptureIsCreatedAfreshForAppending) {
  CallLog log;
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(log.Names(), (Lines{"stat", "open"}));
  EXPECT_EQ(log.calls()[1].flags,
            O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC);
  EXPECT_EQ(log.calls()[1].mode, 0644U);
}

class StartErrnoTest : public StartFaultsTest,
                       public testing::WithParamInterface<int> {};

TEST_P(StartErrnoTest, FailedOpenIsAnswered) {
  const Reply error = ErrnoError(
      "WRITE_FAILED", "Failed to create capture file", path_, GetParam());
  {
    Fault fault(On("open").Fail(GetParam()));
    EXPECT_EQ(Start(path_), error);
  }
  EXPECT_EQ(TakeTranscript(),
            (Lines{Failed("start", error), Answer("start", error)}));
  EXPECT_FALSE(Exists(path_));
  ExpectNoCapture();
  EXPECT_EQ(Start(path_), NullReply());
}

TEST_P(StartErrnoTest, FailedOpenLeavesTheOrphanMoved) {
  WriteFile(path_, kOldAudio);
  const Reply error = ErrnoError(
      "WRITE_FAILED", "Failed to create capture file", path_, GetParam());
  Fault fault(On("open").Fail(GetParam()));
  EXPECT_EQ(Start(path_), error);
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning("preserved orphan audio " + path_ + " as " + slot_),
                   Failed("start", error), Answer("start", error)}));
  EXPECT_FALSE(Exists(path_));
  EXPECT_EQ(ReadFile(slot_), kOldAudio);
  ExpectNoCapture();
}

TEST_P(StartErrnoTest, FailedOpenLeavesAnEarlierCaptureClosed) {
  const std::string earlier = Begin("earlier.aac");
  const Reply error = ErrnoError(
      "WRITE_FAILED", "Failed to create capture file", path_, GetParam());
  Fault fault(On("open").Fail(GetParam()));
  EXPECT_EQ(Start(path_), error);
  EXPECT_EQ(TakeTranscript(),
            (Lines{ClosedLine("start over an open session", earlier, 0),
                   Failed("start", error), Answer("start", error)}));
  ExpectNoCapture();
}

TEST_P(StartErrnoTest, FailedRenameLeavesTheAudioWhereItIs) {
  WriteFile(path_, kOldAudio);
  CallLog log;
  Fault fault(On("rename").Fail(GetParam()));
  EXPECT_EQ(Start(path_), NotPreserved());
  EXPECT_EQ(TakeTranscript(), (Lines{Error("could not preserve orphan audio " +
                                           path_ + ": " + strerror(GetParam())),
                                     Failed("start", NotPreserved()),
                                     Answer("start", NotPreserved())}));
  // One try: no other slot, no copy, no open.
  EXPECT_EQ(log.Names(), (Lines{"stat", "stat", "rename"}));
  EXPECT_EQ(ReadFile(path_), kOldAudio);
  EXPECT_FALSE(Exists(slot_));
  ExpectNoCapture();
}

TEST_P(StartErrnoTest, FailedRenameLeavesAnEarlierCaptureClosed) {
  const std::string earlier = Begin("earlier.aac");
  WriteFile(path_, kOldAudio);
  Fault fault(On("rename").Fail(GetParam()));
  EXPECT_EQ(Start(path_), NotPreserved());
  EXPECT_EQ(LogLines().front(),
            ClosedLine("start over an open session", earlier, 0));
  ExpectNoCapture();
}

TEST_P(StartErrnoTest, FailedStatOfThePathMeansThatNothingIsThere) {
  WriteFile(path_, kOldAudio);
  Fault fault(On("stat").Path(path_).Fail(GetParam()));
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{StartLine(path_, 48000, 1), Answer("start", NullReply())}));
  EXPECT_FALSE(Exists(slot_));
  EXPECT_EQ(ReadFile(path_), Bytes());
}

INSTANTIATE_TEST_SUITE_P(Every, StartErrnoTest,
                         testing::Values(ENOSPC, EIO, EACCES, EMFILE, ENOENT,
                                         EROFS, ENOTDIR, EINTR, 0));

TEST_F(StartFaultsTest, SlotWhoseStatFailsWithAnErrnoIsFree) {
  WriteFile(path_, kOldAudio);
  Fault fault(On("stat").Path(slot_).Fail(EACCES));
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_EQ(ReadFile(slot_), kOldAudio);
}

TEST_F(StartFaultsTest, SlotWhoseStatFailsWithoutAnErrnoIsTaken) {
  WriteFile(path_, kOldAudio);
  Fault fault(On("stat").Path(slot_).Fail(0));
  EXPECT_EQ(Start(path_), NullReply());
  EXPECT_FALSE(Exists(slot_));
  EXPECT_EQ(ReadFile(Path("take.orphan1.aac")), kOldAudio);
}

TEST_F(StartFaultsTest, HundredSlotsAreTriedAndNoMore) {
  WriteFile(path_, kOldAudio);
  CallLog log;
  Fault fault(On("stat").From(2).Fail(0));
  EXPECT_EQ(Start(path_), NotPreserved());
  EXPECT_EQ(TakeTranscript(), (Lines{Error("no free orphan slot for " + path_),
                                     Failed("start", NotPreserved()),
                                     Answer("start", NotPreserved())}));
  const std::vector<PluginCall> stats = log.Of("stat");
  EXPECT_EQ(log.calls().size(), 101U);
  ASSERT_EQ(stats.size(), 101U);
  EXPECT_EQ(stats[1].path, slot_);
  EXPECT_EQ(stats[2].path, Path("take.orphan1.aac"));
  EXPECT_EQ(stats[100].path, Path("take.orphan99.aac"));
  EXPECT_EQ(ReadFile(path_), kOldAudio);
  ExpectNoCapture();
}

}  // namespace
}  // namespace corvane_test
