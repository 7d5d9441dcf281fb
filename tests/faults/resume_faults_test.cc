// "resumePath" with each of its calls made to fail: no capture is open then,
// nothing is held, and the file is as it was.
#include <fcntl.h>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

const char kOverOpen[] = "resumePath over an open session";

class ResumeFaultsTest : public FaultsTest {
 protected:
  // A capture of an earlier run with two bytes of a torn frame at its end.
  ResumeFaultsTest() { WriteFile(path_, torn_); }

  std::string TornLine() const { return DroppingLine(2, path_); }

  Reply NotAvailable(const std::string& code, int errnum) const {
    return ErrnoError(code, "capture not available for resume", path_, errnum);
  }

  Reply NotPrepared(int errnum) const {
    return ErrnoError("WRITE_FAILED", "resumePath could not prepare capture",
                      path_, errnum);
  }

  // The resume fails with `error`, behind the lines of `before`.
  void ExpectResumeFails(const Reply& error, const Lines& before = {}) {
    EXPECT_EQ(ResumePath(path_), error);
    Lines expected = before;
    expected.push_back(Failed("resumePath", error));
    expected.push_back(Answer("resumePath", error));
    EXPECT_EQ(TakeTranscript(), expected);
    EXPECT_EQ(HeldNow(), Held());
    EXPECT_EQ(ReadFile(path_), torn_) << "nothing is changed";
    EXPECT_EQ(Append(Sine(1)).code, "NOT_RECORDING");
    TakeTranscript();
  }

  const Bytes whole_ = Undisturbed(Sine(4 * kFrameSamples));
  const Bytes torn_ = Concat(whole_, {0xFF, 0xF1});
  const int64_t duration_ms_ = FramesToMs(SplitFrames(whole_).size(), 48000);
  const std::string path_ = Path("take.aac");
};

// Syncing is not among them: the file goes on growing, and "flush" or the seal
// will sync it.
TEST_F(ResumeFaultsTest, CallsOfAResumeAreThese) {
  CallLog log;
  EXPECT_EQ(ResumePath(path_), NullReply());
  EXPECT_EQ(Steps(log),
            (Lines{"open", "fstat", "pread", "fstat", "ftruncate"}));
  EXPECT_EQ(log.Of("ftruncate")[0].size, static_cast<int64_t>(whole_.size()));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_F(ResumeFaultsTest, WholeCaptureIsNotCut) {
  WriteFile(path_, whole_);
  CallLog log;
  EXPECT_EQ(ResumePath(path_), NullReply());
  EXPECT_EQ(Steps(log), (Lines{"open", "fstat", "pread", "fstat"}));
}

TEST_F(ResumeFaultsTest, CaptureIsOpenedForAppendingAndNeverCreated) {
  CallLog log;
  ResumePath(path_);
  ASSERT_EQ(log.Of("open").size(), 1U);
  EXPECT_EQ(log.Of("open")[0].flags, O_RDWR | O_APPEND | O_CLOEXEC);
  EXPECT_EQ(log.Of("open")[0].path, path_);
}

TEST_F(ResumeFaultsTest, CaptureThatIsNotThereIsMissing) {
  Fault fault(On("open").Fail(ENOENT));
  CallLog log;
  ExpectResumeFails(NotAvailable("CAPTURE_MISSING", ENOENT));
  EXPECT_EQ(Steps(log), (Lines{"open"}));
}

class ResumeErrnoTest : public ResumeFaultsTest,
                        public testing::WithParamInterface<int> {};

TEST_P(ResumeErrnoTest, CaptureThatDoesNotOpenIsNotCalledMissing) {
  Fault fault(On("open").Fail(GetParam()));
  ExpectResumeFails(NotAvailable("WRITE_FAILED", GetParam()));
}

TEST_P(ResumeErrnoTest, FailedSizeOfTheScanIsReported) {
  CallLog log;
  Fault fault(On("fstat").Nth(1).Fail(GetParam()));
  ExpectResumeFails(NotPrepared(GetParam()));
  EXPECT_EQ(Steps(log), (Lines{"open", "fstat", "close"}));
}

TEST_P(ResumeErrnoTest, FailedReadIsReported) {
  CallLog log;
  Fault fault(On("pread").Fail(GetParam()));
  ExpectResumeFails(NotPrepared(GetParam()));
  EXPECT_EQ(Steps(log), (Lines{"open", "fstat", "pread", "close"}));
}

TEST_P(ResumeErrnoTest, FailedSizeBeforeTheCutIsReported) {
  CallLog log;
  Fault fault(On("fstat").Nth(2).Fail(GetParam()));
  ExpectResumeFails(NotPrepared(GetParam()));
  EXPECT_EQ(Steps(log), (Lines{"open", "fstat", "pread", "fstat", "close"}));
}

TEST_P(ResumeErrnoTest, FailedCutIsReportedBehindItsWarning) {
  CallLog log;
  Fault fault(On("ftruncate").Fail(GetParam()));
  ExpectResumeFails(NotPrepared(GetParam()), {TornLine()});
  EXPECT_EQ(Steps(log),
            (Lines{"open", "fstat", "pread", "fstat", "ftruncate", "close"}));
}

TEST_P(ResumeErrnoTest, FailedCloseDoesNotHideTheFirstFailure) {
  Fault cut(On("ftruncate").Fail(GetParam()));
  Fault close(On("close").Fail(EBADF));
  ExpectResumeFails(NotPrepared(GetParam()), {TornLine()});
}

// Whatever stops the resume, the capture that was recorded is closed by then.
TEST_P(ResumeErrnoTest, OpenCaptureIsClosedAllTheSame) {
  const std::string other = Begin("other.aac");
  Append(Sine(100));
  TakeTranscript();
  Fault fault(On("open").Fail(GetParam()));
  ExpectResumeFails(NotAvailable("WRITE_FAILED", GetParam()),
                    {ClosedLine(kOverOpen, other, 2)});
  EXPECT_EQ(SplitFrames(ReadFile(other)).size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Every, ResumeErrnoTest,
                         testing::Values(EIO, ENOSPC, EACCES, EMFILE, EROFS));

TEST_F(ResumeFaultsTest, OpenWithoutAnErrnoIsStillAFailure) {
  Fault fault(On("open").Fail(0));
  ExpectResumeFails(NotAvailable("WRITE_FAILED", 0));
}

// Going on with a scan or a cut that didn't happen would put new frames behind
// a torn one.
struct ResumeStep {
  const char* function;
  int nth;
};

class ResumeWithoutErrnoTest : public ResumeFaultsTest,
                               public testing::WithParamInterface<ResumeStep> {
};

TEST_P(ResumeWithoutErrnoTest, FailureIsAnInputOutputError) {
  const bool cut = GetParam().function == std::string("ftruncate");
  Fault fault(On(GetParam().function).Nth(GetParam().nth).Fail(0));
  ExpectResumeFails(NotPrepared(EIO), cut ? Lines{TornLine()} : Lines{});
}

INSTANTIATE_TEST_SUITE_P(
    Every, ResumeWithoutErrnoTest,
    testing::Values(ResumeStep{"fstat", 1}, ResumeStep{"pread", 1},
                    ResumeStep{"fstat", 2}, ResumeStep{"ftruncate", 1}),
    [](const testing::TestParamInfo<ResumeStep>& tested) {
      return tested.param.function + std::to_string(tested.param.nth);
    });

TEST_F(ResumeFaultsTest, NextAttemptSucceedsOnceTheFaultIsGone) {
  {
    Fault fault(On("ftruncate").Fail(EIO));
    ExpectResumeFails(NotPrepared(EIO), {TornLine()});
  }
  EXPECT_EQ(ResumePath(path_), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{TornLine(), ResumeLine(path_, whole_.size(), duration_ms_),
                   Answer("resumePath", NullReply())}));
  EXPECT_EQ(ReadFile(path_), whole_);
}

TEST_F(ResumeFaultsTest, InterruptedAndShortReadsAreNoFailure) {
  Fault storm(On("pread").Times(1000).Fail(EINTR));
  Fault short_reads(On("pread").Accept(1));
  EXPECT_EQ(ResumePath(path_), NullReply());
  EXPECT_EQ(
      LogLines(),
      (Lines{TornLine(), ResumeLine(path_, whole_.size(), duration_ms_)}));
}

// What goes wrong in closing is for the log; the resume finds the file's real
// state by itself.
TEST_F(ResumeFaultsTest, FailuresInClosingTheOpenCaptureAreOnlyLogged) {
  const std::string other = Begin("other.aac");
  Append(Sine(100));
  TakeTranscript();
  Fault drain(On("write").Fail(ENOSPC));
  Fault sync(On("fsync").Fail(EIO));
  Fault close(On("close").Fail(ENOSPC));
  EXPECT_EQ(ResumePath(path_), NullReply());
  const auto warning = [&](const char* step, const std::string& text) {
    return Warning(std::string(step) + " on " + kOverOpen + " failed for " +
                   other + ": " + text);
  };
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{warning("codec drain", "Failed to append AAC frame: " +
                                        std::string(strerror(ENOSPC))),
             warning("sync", strerror(EIO)), warning("close", strerror(ENOSPC)),
             ClosedLine(kOverOpen, other, 0), TornLine(),
             ResumeLine(path_, whole_.size(), duration_ms_),
             Answer("resumePath", NullReply())}));
}

// The way back after a full disk: the half frame goes, and the take goes on.
TEST_F(ResumeFaultsTest, FrameTornByAFullDiskIsCutByResumingTheVeryCapture) {
  ResumePath(path_);
  {
    Fault torn(On("write").Nth(1).Accept(10));
    Fault full(On("write").From(2).Fail(ENOSPC));
    EXPECT_EQ(Append(Sine(2 * kFrameSamples)).code, "WRITE_FAILED");
    EXPECT_EQ(Pause(), NullReply());
  }
  EXPECT_EQ(FileSize(path_), static_cast<int64_t>(whole_.size()) + 10);
  TakeTranscript();
  EXPECT_EQ(ResumePath(path_), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{ClosedLine(kOverOpen, path_, 0), DroppingLine(10, path_),
                   ResumeLine(path_, whole_.size(), duration_ms_),
                   Answer("resumePath", NullReply())}));
  EXPECT_EQ(Append(Sine(4 * kFrameSamples)), NullReply());
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path_), Concat(whole_, whole_));
}

}  // namespace
}  // namespace corvane_test
