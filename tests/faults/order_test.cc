// Which comes first: a log line, or the step that it tells of.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "look_fixture.h"

namespace corvane_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using StepsTest = LookTest;

TEST_F(StepsTest, ASealIsAnnouncedBeforeItsFileIsOpened) {
  const std::string path = Begin();
  Append(Sine(kFrameSamples));
  Seen seen;
  Fault look(Look(On("open"), &seen));
  Stop();
  EXPECT_THAT(seen.log, Contains(HasSubstr("stop start capture=" + path)));
}

TEST_F(StepsTest, ASealIsToldWhenItsFileIsClosed) {
  Begin();
  Append(Sine(kFrameSamples));
  Seen seen;
  Fault look(Look(On("close").From(2), &seen));
  Stop();
  EXPECT_THAT(seen.log, Not(Contains(HasSubstr("stop end"))));
}

TEST_F(StepsTest, AClosedCaptureIsToldWhenItIsClosed) {
  Begin();
  Append(Sine(kFrameSamples));
  Seen sync, close;
  Fault look_at_sync(Look(On("fsync"), &sync));
  Fault look_at_close(Look(On("close"), &close));
  Cancel();
  EXPECT_THAT(sync.log, Not(Contains(HasSubstr("closed capture"))));
  EXPECT_THAT(close.log, Not(Contains(HasSubstr("closed capture"))));
}

TEST_F(StepsTest, AFailureInClosingIsToldBeforeTheNextStep) {
  Begin();
  Append(Sine(100));
  Seen sync, close;
  Fault drain(On("avcodec_send_frame").Fail(EAGAIN));
  Fault look_at_sync(Look(On("fsync").Fail(EIO), &sync));
  Fault look_at_close(Look(On("close"), &close));
  Cancel();
  EXPECT_THAT(sync.log, Contains(HasSubstr("codec drain on cancel failed")));
  EXPECT_THAT(close.log, Contains(HasSubstr("sync on cancel failed")));
}

TEST_F(StepsTest, ACutIsAnnouncedBeforeItIsMade) {
  const std::string path = Path("take.aac");
  WriteFile(path, {0xFF});
  Seen seen;
  Fault look(Look(On("ftruncate"), &seen));
  FinalizePath(path);
  EXPECT_THAT(seen.log, Contains(HasSubstr("dropping 1 torn")));
}

TEST_F(StepsTest, AResumedCaptureIsToldWhenItIsRepaired) {
  const std::string path = Path("take.aac");
  WriteFile(path, {0xFF});
  Seen seen;
  Fault look(Look(On("ftruncate"), &seen));
  ResumePath(path);
  EXPECT_THAT(seen.log, Not(Contains(HasSubstr("resumePath capture"))));
}

TEST_F(StepsTest, AnOrphanIsToldWhenItIsMovedAndAStartWhenItsFileIsThere) {
  const std::string path = Path("take.aac");
  WriteFile(path, {1});
  Seen moved, opened;
  Fault look_at_move(Look(On("rename"), &moved));
  Fault look_at_open(Look(On("open"), &opened));
  Start(path);
  EXPECT_THAT(moved.log, IsEmpty());
  EXPECT_THAT(opened.log, ElementsAre(HasSubstr("preserved orphan audio")));
}

TEST_F(StepsTest, ARestartIsToldBeforeTheCodecGoes) {
  Begin();
  Seen seen;
  Fault fault(On("avcodec_send_frame").Nth(1).Fail(EAGAIN));
  Fault look(Look(On("avcodec_free_context").Nth(1), &seen));
  Append(Sine(kFrameSamples));
  EXPECT_THAT(seen.log, Contains(HasSubstr("restarting it")));
}

TEST_F(StepsTest, ACodecThatGivesUpIsGoneBeforeThatIsTold) {
  Begin();
  Seen seen;
  Fault fault(On("avcodec_send_frame").Fail(EAGAIN));
  Fault look(Look(On("avcodec_free_context").Nth(3), &seen));
  Append(Sine(3 * kFrameSamples));
  EXPECT_THAT(seen.log, Not(Contains(HasSubstr("append failed"))));
}

TEST_F(StepsTest, ACodecIsToldBeforeItGetsItsFirstFrame) {
  Begin();
  Seen seen;
  Fault look(Look(On("av_frame_make_writable").Nth(1), &seen));
  Append(Sine(1));
  EXPECT_THAT(seen.log, Contains(HasSubstr("AAC encoder aac started")));
}

class WavStepsTest : public LookTest {
 protected:
  WavStepsTest() { WriteFile(path_, Bytes(50, 0)); }

  Reply Repair() {
    return Call("finalizeWavOnly", Value::Map({{"wavPath", path_},
                                               {"sampleRate", 48000},
                                               {"channels", 1}}));
  }

  const std::string path_ = Path("take.wav");
};

TEST_F(WavStepsTest, ACappedSizeIsToldBeforeTheFileIsOpened) {
  Seen seen;
  Fault huge(On("stat").After(
      [](PluginCall& call) { call.status->st_size = INT64_MAX; }));
  Fault look(Look(On("fopen").Fail(EACCES), &seen));
  EXPECT_EQ(Repair().code, "FINALIZE_FAILED");
  EXPECT_THAT(seen.log, ElementsAre(HasSubstr("header capped at")));
}

TEST_F(WavStepsTest, APatchedHeaderIsToldWhenItsFileIsClosed) {
  Seen seen;
  Fault look(Look(On("fclose"), &seen));
  EXPECT_EQ(Repair(), NullReply());
  EXPECT_THAT(seen.log, IsEmpty());
}

}  // namespace
}  // namespace corvane_test
