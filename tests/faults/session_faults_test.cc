// Closing, pausing and flushing a capture while draining, syncing and closing
// fail: all of it is logged, none of it stops what follows.
#include <functional>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

// One way for CloseSession to fail, and the warning that says so.
struct CloseFault {
  const char* name;
  Rule rule;
  const char* step;
  std::string text;
};

std::string LibavText(int averror) {
  char text[128] = "";
  av_strerror(averror, text, sizeof text);
  return text;
}

CloseFault DrainFault() {
  return {"Drain", On("avcodec_send_frame").Fail(AVERROR_EXTERNAL),
          "codec drain", "avcodec_send_frame: " + LibavText(AVERROR_EXTERNAL)};
}

CloseFault SyncFault() {
  return {"Sync", On("fsync").Nth(1).Fail(EIO), "sync", strerror(EIO)};
}

CloseFault CloseItselfFault() {
  return {"Close", On("close").Nth(1).Fail(ENOSPC), "close", strerror(ENOSPC)};
}

std::string CloseWarning(const CloseFault& fault, const std::string& reason,
                         const std::string& path) {
  return std::string(fault.step) + " on " + reason + " failed for " + path +
         ": " + fault.text;
}

class CloseFaultsTest : public FaultsTest,
                        public testing::WithParamInterface<CloseFault> {
 protected:
  // A capture whose codec holds samples that aren't written yet.
  std::string BeginAndAppend() {
    std::string path = Begin();
    EXPECT_EQ(Append(Sine(100)), NullReply());
    TakeTranscript();
    return path;
  }

  size_t FramesOf(const std::string& path) {
    return SplitFrames(ReadFile(path)).size();
  }
};

TEST_P(CloseFaultsTest, CancelOnlyLogsIt) {
  const std::string path = BeginAndAppend();
  Fault fault(GetParam().rule);
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning(CloseWarning(GetParam(), "cancel", path)),
                   ClosedLine("cancel", path, FramesOf(path)),
                   Answer("cancel", NullReply())}));
  EXPECT_EQ(HeldNow(), Held());
  EXPECT_EQ(Append(Sine(1)).code, "NOT_RECORDING");
}

TEST_P(CloseFaultsTest, StartOverTheCaptureStartsAllTheSame) {
  const std::string path = BeginAndAppend();
  const std::string next = Path("next.aac");
  Fault fault(GetParam().rule);
  EXPECT_EQ(Start(next), NullReply());
  const std::string reason = "start over an open session";
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning(CloseWarning(GetParam(), reason, path)),
                   ClosedLine(reason, path, FramesOf(path)),
                   StartLine(next, 48000, 1), Answer("start", NullReply())}));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_P(CloseFaultsTest, StopGoesOnToSeal) {
  const std::string path = Begin();
  EXPECT_EQ(Append(Sine(4 * kFrameSamples + 1)), NullReply());
  TakeTranscript();
  Fault fault(GetParam().rule);
  const Reply reply = Stop();
  EXPECT_EQ(reply,
            Figures(path, FramesToMs(FramesOf(path), 48000), FileSize(path)));
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{Warning(CloseWarning(GetParam(), "stop", path)),
             ClosedLine("stop", path, FramesOf(path)), SealStartLine(path),
             SealEndLine(reply), Answer("stop", reply)}));
}

// Dispose has no Dart to talk to any more, but GLib's log still hears of it.
TEST_P(CloseFaultsTest, DisposeLogsItAndGoesOn) {
  const std::string path = BeginAndAppend();
  glib().Take();
  Fault fault(GetParam().rule);
  Shutdown();
  EXPECT_EQ(glib().Take(),
            (std::vector<GlibLine>{
                PluginWarning(CloseWarning(GetParam(), "plugin dispose", path)),
                PluginMessage("closed capture on plugin dispose: " + path +
                              " frames=" + std::to_string(FramesOf(path)))}));
  EXPECT_EQ(HeldNow(), Held());
}

INSTANTIATE_TEST_SUITE_P(Every, CloseFaultsTest,
                         testing::Values(DrainFault(), SyncFault(),
                                         CloseItselfFault()),
                         [](const testing::TestParamInfo<CloseFault>& tested) {
                           return std::string(tested.param.name);
                         });

TEST_F(CloseFaultsTest, EachFailureIsLoggedAndTheNextStepStillTaken) {
  const std::string path = BeginAndAppend();
  Fault drain(DrainFault().rule);
  Fault sync(SyncFault().rule);
  Fault close(CloseItselfFault().rule);
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{Warning(CloseWarning(DrainFault(), "cancel", path)),
             Warning(CloseWarning(SyncFault(), "cancel", path)),
             Warning(CloseWarning(CloseItselfFault(), "cancel", path)),
             ClosedLine("cancel", path, 0), Answer("cancel", NullReply())}));
  EXPECT_EQ(HeldNow(), Held());
}

TEST_F(CloseFaultsTest, InterruptedCloseIsNotRepeated) {
  BeginAndAppend();
  CallLog log;
  Fault fault(On("close").Fail(EINTR));
  Cancel();
  EXPECT_EQ(log.Of("close").size(), 1U);
}

// A drain has two halves: the frame that is left, and the flush.
TEST_F(CloseFaultsTest, FailureToSendTheLastFrameSkipsTheFlush) {
  BeginAndAppend();
  CallLog log;
  Fault fault(DrainFault().rule);
  Cancel();
  EXPECT_EQ(log.Of("avcodec_send_frame").size(), 1U);
}

TEST_F(CloseFaultsTest, FailureToFlushFailsTheDrain) {
  const std::string path = BeginAndAppend();
  Fault fault(On("avcodec_send_frame").Nth(2).Fail(AVERROR_EXTERNAL));
  Cancel();
  EXPECT_EQ(LogLines().front(),
            Warning(CloseWarning(DrainFault(), "cancel", path)));
}

TEST_F(CloseFaultsTest, PacketThatDoesNotFitFailsTheDrain) {
  const std::string path = BeginAndAppend();
  Fault fault(PacketsResizedTo(8185));
  Cancel();
  EXPECT_EQ(LogLines().front(),
            Warning("codec drain on cancel failed for " + path +
                    ": AAC frame of 8185 bytes does not fit an ADTS frame"));
}

// "pause" drains too, and has its own words for a failure.
TEST_F(CloseFaultsTest, PauseOnlyLogsAFailedDrain) {
  const std::string path = BeginAndAppend();
  {
    Fault fault(DrainFault().rule);
    EXPECT_EQ(Pause(), NullReply());
  }
  EXPECT_EQ(TakeTranscript(), (Lines{Warning("pause drain failed for " + path +
                                             ": " + DrainFault().text),
                                     Answer("pause", NullReply())}));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
  // Paused all the same: what comes is counted, and a new codec follows.
  EXPECT_EQ(Append(Sine(50)), NullReply());
  EXPECT_EQ(Resume(), NullReply());
  TakeTranscript();
  EXPECT_EQ(Append(Sine(kFrameSamples)), NullReply());
  EXPECT_EQ(LogLines(), (Lines{EncoderLine(48000, 1)}));
  EXPECT_EQ(Stop().dropped_append_bytes, 100);
}

TEST_F(CloseFaultsTest, PauseOnlyLogsAFailedWrite) {
  const std::string path = BeginAndAppend();
  Fault fault(On("write").Fail(ENOSPC));
  EXPECT_EQ(Pause(), NullReply());
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning("pause drain failed for " + path +
                           ": Failed to append AAC frame: " + strerror(ENOSPC)),
                   Answer("pause", NullReply())}));
  EXPECT_EQ(fault.struck(), 1);
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

TEST_F(CloseFaultsTest, PauseDoesNotSync) {
  BeginAndAppend();
  CallLog log;
  Pause();
  EXPECT_EQ(log.Of("fsync").size(), 0U);
}

class FlushTest : public FaultsTest {};

TEST_F(FlushTest, ItSyncsWhilePausedToo) {
  Begin();
  Append(Sine(kFrameSamples));
  Pause();
  CallLog log;
  EXPECT_EQ(Flush(), NullReply());
  EXPECT_EQ(log.Names(), Lines{"fsync"});
}

class FlushFaultsTest : public FaultsTest,
                        public testing::WithParamInterface<int> {};

TEST_P(FlushFaultsTest, FailureIsAnsweredAndTheCaptureStaysOpen) {
  const std::string path = Begin();
  Append(Sine(100));
  TakeTranscript();
  const Reply error =
      ErrnoError("WRITE_FAILED", "flush failed", path, GetParam());
  {
    Fault fault(On("fsync").Fail(GetParam()));
    EXPECT_EQ(Flush(), error);
    EXPECT_EQ(TakeTranscript(),
              (Lines{Failed("flush", error), Answer("flush", error)}));
    EXPECT_EQ(fault.struck(), 1);
  }
  EXPECT_EQ(HeldNow(), HeldWithCodec());
  EXPECT_EQ(Flush(), NullReply());
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
}

INSTANTIATE_TEST_SUITE_P(Every, FlushFaultsTest,
                         testing::Values(EIO, ENOSPC, EINTR, EROFS, 0));

}  // namespace
}  // namespace corvane_test
