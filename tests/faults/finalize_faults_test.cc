// "finalizePath" with its calls made to fail, and the moments at which it asks
// for the working directory.
#include <fcntl.h>
#include <sys/stat.h>

#include <future>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

const char kLabel[] = "finalizePath";

class FinalizeFaultsTest : public FaultsTest {
 protected:
  // A capture of an earlier run with two bytes of a torn frame at its end.
  FinalizeFaultsTest() { WriteFile(path_, torn_); }

  Reply NotAvailable(const std::string& code, int errnum) const {
    return ErrnoError(code, "capture not available", path_, errnum);
  }

  Reply SealingFailed(int errnum) const {
    return ErrnoError("FINALIZE_FAILED", "sealing capture failed", path_,
                      errnum);
  }

  // `cut`: the failure comes behind the warning of the cut.
  void ExpectFinalizeFails(const Reply& error, bool cut = false) {
    EXPECT_EQ(FinalizePath(path_), error);
    Lines expected = {SealStartLine(path_, 0, kLabel)};
    if (cut) {
      expected.push_back(DroppingLine(2, path_));
    }
    expected.push_back(Failed("finalizePath", error));
    expected.push_back(Answer("finalizePath", error));
    EXPECT_EQ(TakeTranscript(), expected);
    EXPECT_EQ(HeldNow(), Held());
    EXPECT_EQ(Slice(ReadFile(path_), 0, whole_.size()), whole_);
  }

  const Bytes whole_ = Undisturbed(Sine(4 * kFrameSamples));
  const Bytes torn_ = Concat(whole_, {0xFF, 0xF1});
  const std::string path_ = Path("take.aac");
};

TEST_F(FinalizeFaultsTest, CallsWithoutAnOpenCaptureAreThoseOfTheSeal) {
  CallLog log;
  EXPECT_EQ(FinalizePath(path_).kind, Reply::Kind::kFigures);
  EXPECT_EQ(Steps(log), (Lines{"open", "fstat", "pread", "fstat", "ftruncate",
                               "fsync", "fstat", "close"}));
  EXPECT_EQ(log.Of("open")[0].flags, O_RDWR | O_CLOEXEC);
}

// Between the scan's look at the size and the cut's another program has written
// to the file, as far as the second look can tell.
TEST_F(FinalizeFaultsTest, ForeignBytesStayInAFileThatGrowsDuringItsSeal) {
  const Bytes foreign = Concat(whole_, Bytes(20, 0x55));
  WriteFile(path_, foreign);
  Fault growth(On("fstat").Nth(2).After(
      [](PluginCall& call) { call.status->st_size += 7; }));
  EXPECT_EQ(FinalizePath(path_).kind, Reply::Kind::kFigures);
  EXPECT_EQ(ReadFile(path_), foreign);
}

TEST_F(FinalizeFaultsTest, CaptureThatIsNotThereIsMissing) {
  Fault fault(On("open").Fail(ENOENT));
  ExpectFinalizeFails(NotAvailable("CAPTURE_MISSING", ENOENT));
}

TEST_F(FinalizeFaultsTest, CaptureThatDoesNotOpenCannotBeFinalized) {
  for (const int errnum : {0, EIO, EACCES, EMFILE, EROFS}) {
    SCOPED_TRACE(errnum);
    Fault fault(On("open").Fail(errnum));
    ExpectFinalizeFails(NotAvailable("FINALIZE_FAILED", errnum));
  }
}

struct FinalizeStep {
  const char* function;
  int nth;
  bool cut;  // comes behind the warning of the cut
};

class FinalizeStepTest : public FinalizeFaultsTest,
                         public testing::WithParamInterface<FinalizeStep> {};

TEST_P(FinalizeStepTest, FailureIsReportedAndTheDescriptorClosed) {
  for (const int errnum : {EIO, ENOSPC, 0}) {
    SCOPED_TRACE(errnum);
    WriteFile(path_, torn_);
    Fault fault(On(GetParam().function).Nth(GetParam().nth).Fail(errnum));
    ExpectFinalizeFails(SealingFailed(errnum == 0 ? EIO : errnum),
                        GetParam().cut);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Every, FinalizeStepTest,
    testing::Values(
        FinalizeStep{"fstat", 1, false}, FinalizeStep{"pread", 1, false},
        FinalizeStep{"fstat", 2, false}, FinalizeStep{"ftruncate", 1, true},
        FinalizeStep{"fsync", 1, true}, FinalizeStep{"fstat", 3, true},
        FinalizeStep{"close", 1, true}),
    [](const testing::TestParamInfo<FinalizeStep>& tested) {
      return tested.param.function + std::to_string(tested.param.nth);
    });

// What goes wrong in closing is for the log; the seal judges the file itself.
TEST_F(FinalizeFaultsTest, FailuresInClosingTheCaptureAreOnlyLogged) {
  const std::string path = Begin("open.aac");
  Append(Sine(4 * kFrameSamples));
  TakeTranscript();
  Fault drain(On("write").Fail(ENOSPC));
  Fault sync(On("fsync").Nth(1).Fail(EIO));
  Fault close(On("close").Nth(1).Fail(ENOSPC));
  const Reply figures = FinalizePath(path);
  const auto warning = [&](const char* step, const std::string& text) {
    return Warning(std::string(step) + " on finalizePath failed for " + path +
                   ": " + text);
  };
  EXPECT_EQ(figures, Figures(path, FramesToMs(3, 48000), FileSize(path)));
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{warning("codec drain", "Failed to append AAC frame: " +
                                        std::string(strerror(ENOSPC))),
             warning("sync", strerror(EIO)), warning("close", strerror(ENOSPC)),
             ClosedLine("finalizePath", path, 3),
             SealStartLine(path, 0, kLabel), SealEndLine(figures, 0, kLabel),
             Answer("finalizePath", figures)}));
}

// The moment at which a relative path gets its meaning.
class FinalizeMomentTest : public FinalizeFaultsTest {
 protected:
  FinalizeMomentTest() {
    mkdir(Path("then").c_str(), 0755);
    mkdir(Path("now").c_str(), 0755);
  }

  const pid_t main_ = gettid();
};

TEST_F(FinalizeMomentTest, OpenCapturesPathIsMadeAbsoluteByTheWorker) {
  const WorkingDir here(Path("then"));
  EXPECT_EQ(Start("take.aac"), NullReply());
  CallLog log;
  EXPECT_EQ(FinalizePath(Path("then/take.aac")).code, "VERIFY_FAILED");
  ASSERT_EQ(log.Of("getcwd").size(), 1U);
  const pid_t worker = log.Of("getcwd")[0].thread;
  EXPECT_NE(worker, main_);
  for (const PluginCall& call : log.calls()) {
    EXPECT_EQ(call.thread, worker) << call;
  }
}

TEST_F(FinalizeMomentTest, ArgumentsAreMadeAbsoluteOnTheMainThreadAlone) {
  const WorkingDir here(Path(""));
  CallLog log;
  EXPECT_EQ(FinalizePath("take.aac").kind, Reply::Kind::kFigures);
  const std::vector<PluginCall> asked = log.Of("getcwd");
  ASSERT_EQ(asked.size(), 2U);
  EXPECT_EQ(asked[0].thread, main_);
  EXPECT_EQ(asked[1].thread, main_);
}

TEST_F(FinalizeMomentTest, AbsolutePathsNeedNoWorkingDirectory) {
  Begin("open.aac");
  CallLog log;
  EXPECT_EQ(FinalizePath(path_).kind, Reply::Kind::kFigures);
  EXPECT_EQ(log.Of("getcwd").size(), 0U);
}

TEST_F(FinalizeMomentTest, WithoutAWorkingDirectoryTheOpenCaptureIsNotFound) {
  const WorkingDir here(Path("then"));
  EXPECT_EQ(Start("take.aac"), NullReply());
  Fault fault(On("getcwd").Fail(ENOENT));
  EXPECT_EQ(FinalizePath(Path("then/take.aac")).code, "VERIFY_FAILED");
  EXPECT_EQ(Append(Sine(1)), NullReply()) << "it goes on";
}

// The path to seal is matched as it was meant when the call came, but opened as
// it was sent, when its turn comes.
TEST_F(FinalizeMomentTest, CallIsMatchedByTheDirectoryInWhichItWasMade) {
  const std::string path = Begin("then/take.aac");
  Append(Sine(kFrameSamples));
  TakeTranscript();
  std::promise<void> moved;
  Fault gate(On("fsync").Nth(1).Before(
      [&](PluginCall&) { moved.get_future().wait(); }));
  const Value args = CaptureArgs("take.aac", 48000, 1);
  Post("flush");
  {
    const WorkingDir then(Path("then"));
    Post("finalizePath", args.With("outputPath", "take.aac"));
  }
  const WorkingDir now(Path("now"));
  moved.set_value();
  AwaitReplies();
  const Reply error = ErrnoError("CAPTURE_MISSING", "capture not available",
                                 "take.aac", ENOENT);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{Answer("flush", NullReply()), ClosedLine("finalizePath", path, 2),
             SealStartLine("take.aac", 0, kLabel),
             Failed("finalizePath", error), Answer("finalizePath", error)}));
}

}  // namespace
}  // namespace corvane_test
