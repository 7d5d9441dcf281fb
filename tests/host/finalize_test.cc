// `corvane finalize`, as its user meets it.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class FinalizeTest : public ProgramTest {
 protected:
  // A capture of two seconds at `take_`, and its bytes.
  Bytes RecordTake() {
    const ChildResult run =
        Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(88200), 44100)});
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadFile(take_);
  }

  // The capture with another channel_configuration in every header.
  static Bytes WithChannelConfig(const Bytes& capture, int config) {
    Bytes result;
    for (Bytes frame : SplitFrames(capture)) {
      frame[2] = static_cast<uint8_t>((frame[2] & 0xFE) | config >> 2);
      frame[3] = static_cast<uint8_t>((frame[3] & 0x3F) | (config & 3) << 6);
      result = Concat(result, frame);
    }
    return result;
  }

  ChildResult Finalize() { return Corvane({"finalize", take_}); }

  const std::string take_ = Path("take.aac");
};

TEST_F(FinalizeTest, ATornFrameIsCutAndTheFiguresAreThoseOfTheFile) {
  const Bytes whole = RecordTake();
  const std::vector<Bytes> frames = SplitFrames(whole);
  const size_t kept = FrameOffset(frames, frames.size() - 1);
  TruncateFile(take_, whole.size() - 3);
  const ChildResult run = Finalize();
  ASSERT_EQ(run.status, 0) << run.err;
  ASSERT_EQ(Lines(run.out).size(), 1U) << run.out;

  EXPECT_EQ(ReadFile(take_), Slice(whole, 0, kept));
  const json expected = {
      {"path", take_},
      {"durationMs", FramesToMs(frames.size() - 1, 44100)},
      {"bytes", kept},
      {"sourceDurationMs", FramesToMs(frames.size() - 1, 44100)},
      {"droppedAppendBytes", 0},
      {"skippedBytes", 0},
      {"sampleRate", 44100},
      {"channels", 1},
      {"tornBytes", whole.size() - 3 - kept}};
  EXPECT_EQ(json::parse(run.out), expected);
  EXPECT_EQ(DecoderComplaints(take_), "");
}

TEST_F(FinalizeTest, AWholeCaptureStaysAsItIs) {
  const Bytes whole = RecordTake();
  const ChildResult run = Finalize();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["tornBytes"], 0);
  EXPECT_EQ(ReadFile(take_), whole);
}

// The plugin's check of its arguments refuses what these headers name.
TEST_F(FinalizeTest, AChannelConfigurationThatIsNoArgumentIsSealedToo) {
  const Bytes whole = RecordTake();
  WriteFile(take_, WithChannelConfig(whole, 0));
  ChildResult run = Finalize();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["channels"], nullptr);

  WriteFile(take_, WithChannelConfig(whole, 7));
  run = Finalize();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["channels"], 8);
}

TEST_F(FinalizeTest, TheFormatIsTheFirstWholeFramesBehindForeignBytes) {
  const Bytes whole = RecordTake();
  WriteFile(take_, Concat(Bytes(70000, 'x'), whole));
  const ChildResult run = Finalize();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["sampleRate"], 44100);
  EXPECT_EQ(json::parse(run.out)["bytes"], 70000 + whole.size());
}

TEST_F(FinalizeTest, AnyNameIsTakenAsItIs) {
  const Bytes whole = RecordTake();
  const std::string odd = Path("-a \n b=c.aac");
  WriteFile(odd, whole);
  const ChildResult run = Corvane({"finalize", "--", odd});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["path"], odd);
}

TEST_F(FinalizeTest, WhatCannotBeACaptureIsNamed) {
  ShouldFail(Finalize(), take_ + ": No such file or directory; check the name");
  ShouldFail(Corvane({"finalize", Path(".")}),
             Path(".") + ": this is a folder; name a file in it");
  ShouldFail(Corvane({"finalize", "/dev/null"}),
             "/dev/null: not a regular file; name one");
  WriteFile(take_, {});
  ShouldFail(Finalize(),
             take_ + ": the file is empty: no audio was recorded into it");
  EXPECT_FALSE(Exists(Path("take.orphan.aac")));
}

TEST_F(FinalizeTest, AFileWithoutAWholeFrameIsLeftAlone) {
  const Bytes first = SplitFrames(RecordTake())[10];
  const std::vector<Bytes> contents = {Bytes(100, 'x'),
                                       Slice(first, 0, first.size() - 1)};
  for (const Bytes& held : contents) {
    WriteFile(take_, held);
    const ChildResult run = Finalize();
    ShouldFail(run,
               take_ + ": not a capture: there is no whole AAC frame in its " +
                   std::to_string(held.size()) + " bytes; it was left alone");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(take_), held);
  }
}

TEST_F(FinalizeTest, AnotherKindOfFileIsLeftAlone) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  const Bytes held = ReadFile(wav);
  ShouldFail(Corvane({"finalize", wav}),
             wav +
                 ": it starts like WAV, not like an ADTS capture; it was left "
                 "alone");
  EXPECT_EQ(ReadFile(wav), held);
  // Nor is a seal forced on what holds no frame: it would fail.
  ShouldFail(Corvane({"finalize", "--force", wav}),
             wav +
                 ": not a capture: there is no whole AAC frame in its 2044 "
                 "bytes; it was left alone");
  EXPECT_EQ(ReadFile(wav), held);
}

TEST_F(FinalizeTest, FramesThatMayBeChanceAreSealedByForceAlone) {
  Bytes frame = SplitFrames(RecordTake())[10];
  frame[5] |= 0x1F;
  frame[6] = 0;  // as no capture has it
  const Bytes held =
      Concat(Concat(Bytes(9000, 'x'), Concat(frame, frame)), Bytes(9000, 'x'));
  WriteFile(take_, held);
  const std::string objection =
      "not a capture: none of its " + std::to_string(held.size()) +
      " bytes belong to AAC frames that follow one another";
  const ChildResult refused = Finalize();
  ShouldFail(refused, take_ + ": " + objection + "; it was left alone");
  ShouldFail(refused, take_ + ": --force takes it for a capture all the same");
  EXPECT_EQ(refused.out, "");

  const ChildResult forced = Corvane({"finalize", "--force", take_});
  EXPECT_EQ(forced.status, 0) << forced.err;
  EXPECT_NE(forced.err.find("corvane: " + take_ + ": " + objection +
                            "; done all the same (--force)\n"),
            std::string::npos)
      << forced.err;
  EXPECT_EQ(json::parse(forced.out)["durationMs"], FramesToMs(2, 44100));
  EXPECT_EQ(ReadFile(take_), held);
}

TEST_F(FinalizeTest, AReadOnlyCaptureComesWithTheWayOut) {
  const Bytes whole = RecordTake();
  ASSERT_EQ(chmod(take_.c_str(), S_IRUSR), 0);
  const ChildResult run = CorvaneUnprivileged({"finalize", take_});
  ShouldFail(run, take_ +
                      ": capture not available: Permission denied; make it "
                      "writable first: chmod u+w '" +
                      take_ + "'");
  ShouldFail(run, take_ +
                      ": the capture is whole up to 0:02.0; seal it again "
                      "with: corvane finalize '" +
                      take_ + "'");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadFile(take_), whole);
}

TEST_F(FinalizeTest, AnUnreadableCaptureComesWithTheWayOut) {
  RecordTake();
  ASSERT_EQ(chmod(take_.c_str(), 0), 0);
  ShouldFail(CorvaneUnprivileged({"finalize", take_}),
             take_ +
                 ": Permission denied; make it readable first: chmod u+rw '" +
                 take_ + "'");
}

TEST_F(FinalizeTest, AFullOutputFailsButTheCaptureIsSealed) {
  const Bytes whole = RecordTake();
  ShouldFail(CorvaneInShell("", ">/dev/full", {"finalize", take_}),
             "the result could not be written to standard output: No space "
             "left on device; the capture itself is sealed in " +
                 take_);
  EXPECT_EQ(ReadFile(take_), whole);
}

TEST_F(FinalizeTest, SeveralCapturesAreALineOfJsonEach) {
  const Bytes whole = RecordTake();
  const std::string other = Path("other.aac");
  WriteFile(other, Concat(whole, Slice(whole, 0, 10)));
  const ChildResult run = Corvane({"finalize", take_, other});
  EXPECT_EQ(run.status, 0) << run.err;
  const Words lines = Lines(run.out);
  ASSERT_EQ(lines.size(), 2U) << run.out;
  EXPECT_EQ(json::parse(lines[0])["path"], take_);
  EXPECT_EQ(json::parse(lines[0])["tornBytes"], 0);
  EXPECT_EQ(json::parse(lines[1])["path"], other);
  EXPECT_EQ(json::parse(lines[1])["tornBytes"], 10);
}

TEST_F(FinalizeTest, OneThatFailsDoesNotHoldUpTheOthers) {
  const Bytes whole = RecordTake();
  const Bytes torn = Concat(whole, Slice(whole, 0, 10));
  const std::string gone = Path("gone.aac");
  const std::string last = Path("last.aac");
  WriteFile(take_, torn);
  WriteFile(last, torn);
  const ChildResult run = Corvane({"finalize", take_, gone, last});
  ShouldFail(run, gone + ": No such file or directory; check the name");
  const Words lines = Lines(run.out);
  ASSERT_EQ(lines.size(), 2U) << run.out;
  EXPECT_EQ(json::parse(lines[0])["path"], take_);
  EXPECT_EQ(json::parse(lines[1])["path"], last);
  EXPECT_EQ(ReadFile(take_), whole);
  EXPECT_EQ(ReadFile(last), whole);
}

TEST_F(FinalizeTest, ACaptureHasToBeNamed) {
  EXPECT_EQ(Corvane({"finalize"}).status, 2);
}

}  // namespace
}  // namespace corvane_test
