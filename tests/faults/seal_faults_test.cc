// Sealing with each of its calls made to fail. "stop" closes the capture first,
// so a fault on a later fsync or close strikes the seal's own.
#include <fcntl.h>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

class SealFaultsTest : public FaultsTest {
 protected:
  // A capture that needs nothing but to be stopped: its codec is drained.
  SealFaultsTest() {
    Append(Sine(4 * kFrameSamples));
    Pause();
    content_ = ReadFile(path_);
    frames_ = SplitFrames(content_).size();
    TakeTranscript();
  }

  Reply SealingFailed(int errnum) const {
    return ErrnoError("FINALIZE_FAILED", "sealing capture failed", path_,
                      errnum);
  }

  // "stop" fails with `error`, and nothing but the usual lines and `warnings`
  // come before it.
  void ExpectStopFails(const Reply& error, const Lines& warnings = {}) {
    EXPECT_EQ(Stop(), error);
    Lines expected = {ClosedLine("stop", path_, frames_), SealStartLine(path_)};
    expected.insert(expected.end(), warnings.begin(), warnings.end());
    expected.push_back(Failed("stop", error));
    expected.push_back(Answer("stop", error));
    EXPECT_EQ(TakeTranscript(), expected);
    EXPECT_EQ(HeldNow(), Held());
    EXPECT_EQ(Stop(),
              PlainError("NOT_RECORDING", "stop with no open recording"));
  }

  const std::string path_ = Begin();
  Bytes content_;
  size_t frames_ = 0;
};

// The calls of a "stop", which closes the capture first.
Lines WithClosing(Lines seal) {
  const Lines closing = {"fsync", "close"};
  seal.insert(seal.begin(), closing.begin(), closing.end());
  return seal;
}

TEST_F(SealFaultsTest, CallsOfAStopAreThese) {
  CallLog log;
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(Steps(log), WithClosing({"open", "fstat", "pread", "fstat", "fsync",
                                     "fstat", "close"}));
}

TEST_F(SealFaultsTest, CaptureIsOpenedForRepairAndNeverCreated) {
  CallLog log;
  Stop();
  ASSERT_EQ(log.Of("open").size(), 1U);
  EXPECT_EQ(log.Of("open")[0].flags, O_RDWR | O_CLOEXEC);
}

TEST_F(SealFaultsTest, CaptureThatVanishedIsMissing) {
  Fault fault(On("open").Fail(ENOENT));
  ExpectStopFails(
      ErrnoError("CAPTURE_MISSING", "capture not available", path_, ENOENT));
}

class SealErrnoTest : public SealFaultsTest,
                      public testing::WithParamInterface<int> {};

TEST_P(SealErrnoTest, CaptureThatDoesNotOpenCannotBeFinalized) {
  CallLog log;
  Fault fault(On("open").Fail(GetParam()));
  ExpectStopFails(ErrnoError("FINALIZE_FAILED", "capture not available", path_,
                             GetParam()));
  EXPECT_EQ(Steps(log), WithClosing({"open"}));
  EXPECT_EQ(ReadFile(path_), content_);
}

TEST_P(SealErrnoTest, FailedReadIsReportedAndNothingIsCut) {
  AppendToFile(path_, {0xFF, 0xF1});
  CallLog log;
  Fault fault(On("pread").Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
  EXPECT_EQ(Steps(log), WithClosing({"open", "fstat", "pread", "close"}));
  EXPECT_EQ(ReadFile(path_), Concat(content_, {0xFF, 0xF1}));
}

TEST_P(SealErrnoTest, FailedSizeOfTheScanIsReported) {
  CallLog log;
  Fault fault(On("fstat").Nth(1).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
  EXPECT_EQ(Steps(log), WithClosing({"open", "fstat", "close"}));
}

TEST_P(SealErrnoTest, FailedSizeBeforeTheCutIsReportedAndNothingIsCut) {
  AppendToFile(path_, {0xFF, 0xF1});
  CallLog log;
  Fault fault(On("fstat").Nth(2).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
  EXPECT_EQ(Steps(log),
            WithClosing({"open", "fstat", "pread", "fstat", "close"}));
  EXPECT_EQ(ReadFile(path_), Concat(content_, {0xFF, 0xF1}));
}

TEST_P(SealErrnoTest, FailedSyncIsReported) {
  CallLog log;
  Fault fault(On("fsync").Nth(2).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
  EXPECT_EQ(Steps(log),
            WithClosing({"open", "fstat", "pread", "fstat", "fsync", "close"}));
}

TEST_P(SealErrnoTest, FailedFinalSizeIsReported) {
  Fault fault(On("fstat").Nth(3).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
}

TEST_P(SealErrnoTest, FailedCloseIsReported) {
  Fault fault(On("close").Nth(2).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()));
}

// The warning goes out first, so a file that stays torn is explained.
TEST_P(SealErrnoTest, FailedCutIsReportedBehindItsWarning) {
  AppendToFile(path_, {0xFF, 0xF1});
  CallLog log;
  Fault fault(On("ftruncate").Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()),
                  {Warning("dropping 2 torn trailing bytes from " + path_)});
  EXPECT_EQ(Steps(log), WithClosing({"open", "fstat", "pread", "fstat",
                                     "ftruncate", "close"}));
  EXPECT_EQ(log.Of("ftruncate")[0].size, static_cast<int64_t>(content_.size()));
  EXPECT_EQ(ReadFile(path_), Concat(content_, {0xFF, 0xF1}));
}

TEST_P(SealErrnoTest, CutStaysWhenALaterStepFails) {
  AppendToFile(path_, {0xFF, 0xF1});
  Fault fault(On("fsync").Nth(2).Fail(GetParam()));
  ExpectStopFails(SealingFailed(GetParam()),
                  {Warning("dropping 2 torn trailing bytes from " + path_)});
  EXPECT_EQ(ReadFile(path_), content_);
}

// A failure earlier in the sequence is the one to report.
TEST_P(SealErrnoTest, CloseDoesNotHideTheFirstFailure) {
  for (const char* first : {"pread", "ftruncate"}) {
    const std::string path = Begin(std::string(first) + ".aac");
    WriteFile(path, Concat(content_, {0xFF}));
    Fault failure(On(first).Fail(GetParam()));
    Fault close(On("close").Nth(2).Fail(EBADF));
    EXPECT_EQ(Stop(), ErrnoError("FINALIZE_FAILED", "sealing capture failed",
                                 path, GetParam()))
        << first;
  }
}

TEST_P(SealErrnoTest, SyncFailureIsReportedBeforeThatOfClose) {
  Fault sync(On("fsync").Nth(2).Fail(GetParam()));
  Fault close(On("close").Nth(2).Fail(EBADF));
  ExpectStopFails(SealingFailed(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Every, SealErrnoTest,
                         testing::Values(EIO, ENOSPC, EACCES, EMFILE, EROFS));

TEST_F(SealFaultsTest, InterruptedReadsAreRetried) {
  Fault storm(On("pread").Times(1000).Fail(EINTR));
  EXPECT_EQ(Stop(), Figures(path_, FramesToMs(frames_, 48000),
                            static_cast<int64_t>(content_.size())));
  EXPECT_EQ(storm.struck(), 1000);
}

TEST_F(SealFaultsTest, CaptureReadByteByByteSealsTheSame) {
  Fault short_reads(On("pread").Accept(1));
  EXPECT_EQ(Stop(), Figures(path_, FramesToMs(frames_, 48000),
                            static_cast<int64_t>(content_.size())));
}

TEST_F(SealFaultsTest, OpenWithoutAnErrnoIsStillAFailure) {
  Fault fault(On("open").Fail(0));
  ExpectStopFails(
      ErrnoError("FINALIZE_FAILED", "capture not available", path_, 0));
}

// A call that fails without saying why has failed all the same: what a seal
// answers may never rest on a size or a scan that it doesn't have.
struct SealStep {
  const char* function;
  int nth;  // among the calls of the whole "stop"
};

class SealWithoutErrnoTest : public SealFaultsTest,
                             public testing::WithParamInterface<SealStep> {};

TEST_P(SealWithoutErrnoTest, FailureIsAnInputOutputErrorAndNoFrameIsCut) {
  AppendToFile(path_, {0xFF, 0xF1});
  Fault fault(On(GetParam().function).Nth(GetParam().nth).Fail(0));
  EXPECT_EQ(Stop(), SealingFailed(EIO));
  EXPECT_EQ(Slice(ReadFile(path_), 0, content_.size()), content_);
  EXPECT_EQ(HeldNow(), Held());
}

INSTANTIATE_TEST_SUITE_P(
    Every, SealWithoutErrnoTest,
    testing::Values(SealStep{"fstat", 1}, SealStep{"pread", 1},
                    SealStep{"fstat", 2}, SealStep{"ftruncate", 1},
                    SealStep{"fsync", 2}, SealStep{"fstat", 3},
                    SealStep{"close", 2}),
    [](const testing::TestParamInfo<SealStep>& tested) {
      return tested.param.function + std::to_string(tested.param.nth);
    });

}  // namespace
}  // namespace corvane_test
