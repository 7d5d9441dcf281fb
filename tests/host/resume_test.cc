// `corvane resume` where it goes on with a take.
#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class ResumeTest : public ProgramTest {
 protected:
  // The capture that a take of this audio makes.
  Bytes Recorded(const Bytes& pcm, int rate = 48000, int channels = 1) {
    const std::string path = Path("reference.aac");
    const ChildResult run =
        CorvaneFed(pcm, {"record", path, "-i", "-", "-r", std::to_string(rate),
                         "-c", std::to_string(channels)});
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadFile(path);
  }

  ChildResult Resume(const Bytes& pcm, int rate = 48000, int channels = 1) {
    return Corvane(
        {"resume", take_, "-i", MakeWav("in.wav", pcm, rate, channels)});
  }

  // Records until the process is killed, in the middle of this audio.
  void RecordAndKill(const Bytes& pcm) {
    ChildSetup setup;
    setup.input_is_pipe = true;
    const auto child = StartCorvane(
        {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}, setup);
    // The program has all of it but what the pipe holds, and has been answered
    // for all but the appends that may be under way.
    child->Write(pcm);
    child->Signal(SIGKILL);
    EXPECT_EQ(child->Wait().status, -1);
  }

  // The capture cut inside its last frame, and what stands before that frame.
  Bytes Tear() {
    const Bytes whole = ReadFile(take_);
    const std::vector<Bytes> frames = SplitFrames(whole);
    TruncateFile(take_, whole.size() - 3);
    return Slice(whole, 0, FrameOffset(frames, frames.size() - 1));
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(ResumeTest, AKilledTakeGoesOnBehindItsLastWholeFrame) {
  const Bytes pcm = Noise(480000);
  const Bytes rest = Sine(48000);
  const Bytes uninterrupted = Recorded(pcm);
  const Bytes rest_alone = Recorded(rest);

  RecordAndKill(pcm);
  const Bytes kept = Tear();
  // Two seconds of the ten and the pipe are all that was not answered.
  ASSERT_GT(SplitFrames(kept).size(), 360U);
  ASSERT_EQ(kept, Slice(uninterrupted, 0, kept.size()));

  const ChildResult run = Resume(rest);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(take_), Concat(kept, rest_alone));
  EXPECT_EQ(DecoderComplaints(take_), "");
}

TEST_F(ResumeTest, WhatItFoundIsSaidBeforeItGoesOn) {
  WriteFile(take_, Recorded(Sine(96000)));
  const int64_t bytes = FileSize(take_);
  const Bytes kept = Tear();
  const auto torn = static_cast<size_t>(bytes) - 3 - kept.size();
  const size_t frames = SplitFrames(kept).size();
  const ChildResult run = Resume(Sine(4096));
  ASSERT_EQ(run.status, 0) << run.err;

  const Words lines = Lines(run.err);
  ASSERT_EQ(lines.size(), 7U) << run.err;
  EXPECT_EQ(lines[0], "corvane: " + take_ + ": found " +
                          std::to_string(frames) +
                          " whole AAC frames, 0:02.0 of audio; " +
                          std::to_string(torn) + " torn bytes will be cut off");
  EXPECT_EQ(lines[1], "warning: dropping " + std::to_string(torn) +
                          " torn trailing bytes from " + take_);
  EXPECT_EQ(lines[2],
            "info: resumePath capture=" + take_ +
                " bytes=" + std::to_string(kept.size()) +
                " durationMs=" + std::to_string(FramesToMs(frames, 48000)));
}

TEST_F(ResumeTest, TheResultHoldsTheWholeCaptureAndWhatWasKept) {
  WriteFile(take_, Recorded(Sine(96000)));
  const Bytes kept = Tear();
  const int64_t torn = FileSize(take_) - static_cast<int64_t>(kept.size());
  const ChildResult run = Resume(Sine(4096 + 7));
  ASSERT_EQ(run.status, 0) << run.err;
  ASSERT_EQ(Lines(run.out).size(), 1U) << run.out;

  const json result = json::parse(run.out);
  const size_t frames = SplitFrames(ReadFile(take_)).size();
  EXPECT_EQ(result["path"], take_);
  EXPECT_EQ(result["bytes"], FileSize(take_));
  EXPECT_EQ(result["durationMs"], FramesToMs(frames, 48000));
  EXPECT_EQ(result["sampleFrames"], 4096 + 7);
  EXPECT_EQ(result["endedBy"], "input");
  EXPECT_EQ(result["keptBytes"], kept.size());
  EXPECT_EQ(result["keptDurationMs"],
            FramesToMs(SplitFrames(kept).size(), 48000));
  EXPECT_EQ(result["tornBytes"], torn);
}

TEST_F(ResumeTest, AWholeCaptureKeepsEveryByte) {
  const Bytes whole = Recorded(Sine(48000));
  WriteFile(take_, whole);
  const ChildResult run = Resume(Sine(4096));
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find(" of audio; nothing is torn\n"), std::string::npos)
      << run.err;
  EXPECT_EQ(Slice(ReadFile(take_), 0, whole.size()), whole);
}

TEST_F(ResumeTest, AnEmptyFileBecomesTheTake) {
  const Bytes pcm = Sine(48000);
  WriteFile(take_, {});
  const ChildResult run = Resume(pcm);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      Lines(run.err).front(),
      "corvane: " + take_ + ": the file is empty; the take begins with it");
  EXPECT_EQ(ReadFile(take_), Recorded(pcm));
}

TEST_F(ResumeTest, ForeignBytesAreNamedAndStay) {
  const Bytes whole = Recorded(Sine(48000));
  const Bytes held = Concat(Concat(whole, Bytes(10, 'x')), whole);
  WriteFile(take_, held);
  const ChildResult run = Resume(Sine(4096));
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("; 10 foreign bytes between the frames will stay\n"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(Slice(ReadFile(take_), 0, held.size()), held);
}

TEST_F(ResumeTest, AnotherFormatIsRefusedWithBothNamed) {
  const Bytes whole = Recorded(Sine(48000));
  WriteFile(take_, whole);
  const ChildResult run = Resume(Sine(44100, 2, 44100), 44100, 2);
  EXPECT_EQ(run.status, 2) << run.err;
  EXPECT_EQ(Lines(run.err)[1],
            "corvane: " + take_ +
                ": its frames are 1 channel at 48000 Hz, the new audio is 2 "
                "channels at 44100 Hz; many players go by the first frame "
                "alone, and the duration would be computed with the last "
                "one's rate; --force does it all the same");
  EXPECT_EQ(ReadFile(take_), whole);
  EXPECT_EQ(run.out, "");
}

TEST_F(ResumeTest, ForceMixesFormatsAndSaysSo) {
  const Bytes whole = Recorded(Sine(48000));
  const Bytes other = Recorded(Sine(44100, 2, 44100), 44100, 2);
  WriteFile(take_, whole);
  const ChildResult run =
      Corvane({"resume", "--force", take_, "-i",
               MakeWav("in.wav", Sine(44100, 2, 44100), 44100, 2)});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("; done all the same (--force)\n"), std::string::npos)
      << run.err;
  EXPECT_EQ(ReadFile(take_), Concat(whole, other));
}

TEST_F(ResumeTest, RateAloneOrChannelsAloneAreRefused) {
  const Bytes whole = Recorded(Sine(48000));
  WriteFile(take_, whole);
  EXPECT_NE(Resume(Sine(4096, 2), 48000, 2)
                .err.find("the new audio is 2 channels at 48000 Hz"),
            std::string::npos);
  EXPECT_NE(Resume(Sine(4096), 44100)
                .err.find("the new audio is 1 channel at 44100 Hz"),
            std::string::npos);
  EXPECT_EQ(ReadFile(take_), whole);
}

TEST_F(ResumeTest, TheLastRateIsComparedToo) {
  const Bytes mixed =
      Concat(Recorded(Sine(48000)), Recorded(Sine(44100), 44100));
  WriteFile(take_, mixed);
  const ChildResult run = Resume(Sine(4096));
  EXPECT_EQ(run.status, 2) << run.err;
  EXPECT_NE(run.err.find("its frames are 1 channel at 48000 Hz (the last at "
                         "44100 Hz), the new audio is 1 channel at 48000 Hz"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(ReadFile(take_), mixed);
}

TEST_F(ResumeTest, RawAudioTakesTheCapturesFormat) {
  const Bytes pcm = Sine(44100, 2, 44100);
  const Bytes whole = Recorded(pcm, 44100, 2);
  WriteFile(take_, whole);
  for (const Words& named : {Words{}, Words{"-r", "44100"}, Words{"-c", "2"}}) {
    WriteFile(take_, whole);
    Words words = {"resume", take_, "-i", "-"};
    words.insert(words.end(), named.begin(), named.end());
    const ChildResult run = CorvaneFed(pcm, words);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadFile(take_), Concat(whole, whole));
  }
}

TEST_F(ResumeTest, AnEmptyCaptureHasNoFormatForRawAudio) {
  WriteFile(take_, {});
  const ChildResult run = Corvane({"resume", take_, "-i", "-"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(Lines(run.err).back(),
            "corvane: " + take_ +
                ": it doesn't tell the rate and channels of raw audio; name "
                "them, as in -r 48000 -c 1");
  EXPECT_EQ(FileSize(take_), 0);
}

}  // namespace
}  // namespace corvane_test
