// Writing of frames: partial, interrupted and failing writes under "append".
#include "faults_fixture.h"

namespace corvane_test {
namespace {

class WriteFaultsTest : public FaultsTest {
 protected:
  // A take of pcm_ with the faults in force; returns the file.
  Bytes Take() {
    const std::string path = Begin();
    EXPECT_EQ(Append(pcm_), NullReply());
    EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
    EXPECT_EQ(LogLines().front(), EncoderLine(48000, 1));
    Bytes file = ReadFile(path);
    EXPECT_EQ(unlink(path.c_str()), 0);
    return file;
  }

  // The reply of an append whose write failed.
  static Reply WriteError(const std::string& path, int errnum) {
    return ErrnoError("WRITE_FAILED", "Failed to append AAC frame", path,
                      errnum);
  }

  const Bytes pcm_ = Sine(3 * kFrameSamples);
};

TEST_F(WriteFaultsTest, FrameIsWrittenInOneCall) {
  const std::vector<Bytes> frames = UndisturbedFrames(pcm_);
  CallLog log;
  Take();
  const std::vector<PluginCall> writes = log.Of("write");
  ASSERT_EQ(writes.size(), frames.size());
  for (size_t i = 0; i < writes.size(); ++i) {
    EXPECT_EQ(writes[i].size, static_cast<int64_t>(frames[i].size())) << i;
  }
}

TEST_F(WriteFaultsTest, EverySplitOfAFrameGivesTheSameFile) {
  const Bytes undisturbed = Undisturbed(pcm_);
  const auto length = static_cast<int64_t>(SplitFrames(undisturbed)[1].size());
  for (int64_t accepted = 1; accepted < length; ++accepted) {
    CallLog log;
    Fault short_write(On("write").Nth(2).Accept(accepted));
    ASSERT_EQ(Take(), undisturbed) << accepted << " bytes accepted";
    const std::vector<PluginCall> writes = log.Of("write");
    ASSERT_EQ(writes[1].result, accepted);
    ASSERT_EQ(writes[2].size, length - accepted);
  }
}

TEST_F(WriteFaultsTest, FileWrittenByteByByteIsTheSame) {
  const Bytes undisturbed = Undisturbed(pcm_);
  Fault short_writes(On("write").Accept(1));
  EXPECT_EQ(Take(), undisturbed);
  EXPECT_EQ(short_writes.struck(), static_cast<int>(undisturbed.size()));
}

// The chunk ends in half a sample; what follows has to fit it all the same.
TEST_F(WriteFaultsTest, FailureLeavesTheCarryInPlace) {
  const std::string path = Begin();
  const Bytes pcm = Noise(6 * kFrameSamples);
  const auto cut = pcm.begin() + 4 * kFrameSamples * 2 + 1;
  {
    Fault fault(On("write").Fail(ENOSPC));
    EXPECT_EQ(Append(Bytes(pcm.begin(), cut)), WriteError(path, ENOSPC));
  }
  SentFrames sent;
  EXPECT_EQ(Append(Bytes(cut, pcm.end())), NullReply());
  const Bytes sample(pcm.begin() + 4 * kFrameSamples * 2,
                     pcm.begin() + 4 * kFrameSamples * 2 + 2);
  const auto first = static_cast<int16_t>(sample[0] | sample[1] << 8);
  EXPECT_EQ(sent.all().at(0).planes.at(0).at(0),
            static_cast<float>(first) / 32768.0F);
}

TEST_F(WriteFaultsTest, InterruptedWritesAreRetried) {
  const Bytes undisturbed = Undisturbed(pcm_);
  Fault storm(On("write").Times(1000).Fail(EINTR));
  EXPECT_EQ(Take(), undisturbed);
  EXPECT_EQ(storm.struck(), 1000);
}

TEST_F(WriteFaultsTest, InterruptionInsideAFrameGoesOnBehindIt) {
  const Bytes undisturbed = Undisturbed(pcm_);
  Fault short_write(On("write").Nth(1).Accept(10));
  Fault storm(On("write").From(2).Times(3).Fail(EINTR));
  EXPECT_EQ(Take(), undisturbed);
}

class WriteErrnoTest : public WriteFaultsTest,
                       public testing::WithParamInterface<int> {};

TEST_P(WriteErrnoTest, FailureIsAnsweredAtOnce) {
  const std::string path = Begin();
  CallLog log;
  Fault fault(On("write").Fail(GetParam()));
  const Reply error = WriteError(path, GetParam());
  EXPECT_EQ(Append(Sine(9 * kFrameSamples)), error);
  EXPECT_EQ(TakeTranscript(),
            (Lines{EncoderLine(48000, 1), Failed("append", error),
                   Answer("append", error)}));
  // Nothing is tried behind the write that failed.
  EXPECT_EQ(fault.struck(), 1);
  EXPECT_STREQ(log.calls().back().name, "write");
  EXPECT_EQ(ReadFile(path), Bytes());
}

TEST_P(WriteErrnoTest, FramesWrittenBeforeStay) {
  const std::vector<Bytes> frames = UndisturbedFrames(Sine(9 * kFrameSamples));
  const std::string path = Begin();
  Fault fault(On("write").Nth(3).Fail(GetParam()));
  EXPECT_EQ(Append(Sine(9 * kFrameSamples)), WriteError(path, GetParam()));
  EXPECT_EQ(ReadFile(path), Concat(frames[0], frames[1]));
}

TEST_P(WriteErrnoTest, CodecStaysOpenAndTheNextChunkGoesOn) {
  const std::string path = Begin();
  SentFrames sent;
  {
    Fault fault(On("write").Fail(GetParam()));
    EXPECT_EQ(Append(Sine(4 * kFrameSamples)), WriteError(path, GetParam()));
  }
  EXPECT_EQ(HeldNow(), HeldWithCodec());
  TakeTranscript();
  EXPECT_EQ(Append(Sine(kFrameSamples)), NullReply());
  EXPECT_EQ(TakeTranscript(), (Lines{Answer("append", NullReply())}));
  // The first packet comes with the second frame; frames 3 and 4 are dropped.
  std::vector<int64_t> pts;
  for (const SentFrame& frame : sent.all()) {
    pts.push_back(frame.pts);
  }
  EXPECT_EQ(pts, (std::vector<int64_t>{0, 1024, 2048}));
}

INSTANTIATE_TEST_SUITE_P(Every, WriteErrnoTest,
                         testing::Values(ENOSPC, EIO, EFBIG, EDQUOT, EBADF,
                                         EACCES, EAGAIN));

TEST_F(WriteFaultsTest, WriteOfZeroBytesIsAnInputOutputError) {
  const std::string path = Begin();
  Fault fault(On("write").Return(0));
  EXPECT_EQ(Append(pcm_), WriteError(path, 5));
  EXPECT_EQ(fault.struck(), 1);
}

TEST_F(WriteFaultsTest, ZeroBytesInsideAFrameAreAnInputOutputError) {
  const std::string path = Begin();
  Fault short_write(On("write").Nth(1).Accept(10));
  Fault zero(On("write").Nth(2).Return(0));
  EXPECT_EQ(Append(pcm_), WriteError(path, 5));
  EXPECT_EQ(FileSize(path), 10);
}

TEST_F(WriteFaultsTest, FailureWithoutAnErrnoCountsAsWritten) {
  const std::vector<Bytes> frames = UndisturbedFrames(pcm_);
  const std::string path = Begin();
  Fault fault(On("write").Nth(2).Fail(0));
  EXPECT_EQ(Append(pcm_), NullReply());
  TakeTranscript();
  EXPECT_EQ(Cancel(), NullReply());
  EXPECT_EQ(TakeTranscript(), (Lines{ClosedLine("cancel", path, frames.size()),
                                     Answer("cancel", NullReply())}));
  Bytes expected = frames[0];
  for (size_t i = 2; i < frames.size(); ++i) {
    expected = Concat(expected, frames[i]);
  }
  EXPECT_EQ(ReadFile(path), expected);
}

TEST_F(WriteFaultsTest, FullDiskLeavesATornTailThatTheSealCuts) {
  const std::vector<Bytes> frames = UndisturbedFrames(pcm_);
  const std::string path = Begin();
  Fault torn(On("write").Nth(2).Accept(10));
  Fault disk_full(On("write").From(3).Fail(ENOSPC));
  const Reply error = WriteError(path, ENOSPC);
  EXPECT_EQ(Append(pcm_), error);
  EXPECT_EQ(ReadFile(path), Concat(frames[0], Slice(frames[1], 0, 10)));
  TakeTranscript();

  const auto kept = static_cast<int64_t>(frames[0].size());
  const Reply figures = Figures(path, FramesToMs(1, 48000), kept);
  EXPECT_EQ(Stop(), figures);
  EXPECT_EQ(TakeTranscript(),
            (Lines{Warning("codec drain on stop failed for " + path + ": " +
                           error.message),
                   ClosedLine("stop", path, 1), SealStartLine(path),
                   Warning("dropping 10 torn trailing bytes from " + path),
                   SealEndLine(figures), Answer("stop", figures)}));
  EXPECT_EQ(ReadFile(path), frames[0]);
}

TEST_F(WriteFaultsTest, FramesBehindATornOneAreKeptAndTheGapIsReported) {
  const Bytes pcm = Sine(6 * kFrameSamples);
  const std::vector<Bytes> frames = UndisturbedFrames(pcm);
  const std::string path = Begin();
  {
    Fault torn(On("write").Nth(2).Accept(1));
    Fault failing(On("write").Nth(3).Fail(EIO));
    EXPECT_EQ(Append(Slice(pcm, 0, 3 * 2048)), WriteError(path, EIO));
  }
  EXPECT_EQ(Append(Slice(pcm, 3 * 2048)), NullReply());
  Bytes expected = Concat(frames[0], {0xFF});
  for (size_t i = 2; i < frames.size(); ++i) {
    expected = Concat(expected, frames[i]);
  }
  TakeTranscript();
  const Reply figures = Figures(path, FramesToMs(frames.size() - 1, 48000),
                                static_cast<int64_t>(expected.size()));
  EXPECT_EQ(Stop(), figures);
  EXPECT_EQ(
      TakeTranscript(),
      (Lines{ClosedLine("stop", path, frames.size() - 1), SealStartLine(path),
             Warning(path + " has 1 non-ADTS bytes between frames; left "
                            "in place"),
             SealEndLine(figures, 1), Answer("stop", figures)}));
  EXPECT_EQ(ReadFile(path), expected);
}

}  // namespace
}  // namespace corvane_test
