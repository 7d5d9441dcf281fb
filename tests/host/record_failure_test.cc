// `corvane record` where something is wrong: one sentence with the file's name
// and the way out, status 1, and what was recorded kept.
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"
#include "terminal/wording.h"

namespace corvane_test {
namespace {

constexpr size_t k20Seconds = 960000;  // at 48000 Hz

class RecordFailureTest : public ProgramTest {
 protected:
  static int CountOf(const std::string& text, const std::string& in) {
    int count = 0;
    for (size_t at = 0; (at = in.find(text, at)) != std::string::npos; ++at) {
      ++count;
    }
    return count;
  }

  // The capture is whole frames from its first byte to its last.
  void TakeIsSealed() const {
    EXPECT_GT(SplitFrames(ReadFile(take_)).size(), 0U);
  }

  // Where the figures are still to be had.
  std::string Figures() const {
    return "; get its figures with: corvane finalize '" + take_ + "'";
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(RecordFailureTest, AMissingInputIsNamedAndTheOlderTakeStays) {
  WriteFile(take_, {1, 2, 3});
  ShouldFail(Corvane({"record", take_, "-i", Path("gone.wav")}),
             Path("gone.wav") + ": No such file or directory");
  EXPECT_EQ(ReadFile(take_), Bytes({1, 2, 3}));
}

TEST_F(RecordFailureTest, AnInputThatIsNoAudioIsNamed) {
  WriteFile(Path("text.wav"), Bytes(1000, 'x'));
  ShouldFail(Corvane({"record", take_, "-i", Path("text.wav")}),
             Path("text.wav") +
                 ": not audio that libsndfile can read (Format not "
                 "recognised.); convert it first, for example to WAV");
  EXPECT_FALSE(Exists(take_));
}

TEST_F(RecordFailureTest, AnInputThatCouldBlockIsSentToThePipe) {
  ShouldFail(Corvane({"record", take_, "-i", "/dev/null"}),
             "/dev/null: not a regular file; pipe raw s16le in instead "
             "(with -i - and -r and -c)");
}

TEST_F(RecordFailureTest, ARateWithoutAnIndexComesWithTheWayToConvertIt) {
  const std::string wav = MakeWav("odd rate.wav", Sine(1000), 44000);
  const ChildResult run = Corvane({"record", "--verbose", take_, "-i", wav});
  ShouldFail(run, wav +
                      ": ADTS has no index for 44000 Hz; convert it first: "
                      "ffmpeg -i '" +
                      wav + "' -ar 44100 '" + Path("odd rate-converted.wav") +
                      "'");
  EXPECT_EQ(run.out, "");
  ShouldFail(run,
             "the plugin's error: code=UNSUPPORTED_FORMAT message=\"ADTS has "
             "no index for 44000 Hz\" domain=none nativeCode=none path=none");
  EXPECT_FALSE(Exists(take_));
}

TEST_F(RecordFailureTest, SevenChannelsComeWithTheWayToMixThemDown) {
  const std::string wav = MakeWav("many.wav", Sine(1000, 7), 48000, 7);
  ShouldFail(Corvane({"record", take_, "-i", wav}),
             wav +
                 ": ADTS cannot express 7 channels; convert it first: "
                 "ffmpeg -i '" +
                 wav + "' -ac 2 '" + Path("many-converted.wav") + "'");
}

TEST_F(RecordFailureTest, AMissingFolderComesWithTheWayToMakeIt) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  const std::string deep = Path("no/such/take.aac");
  const ChildResult run = Corvane({"record", "-v", deep, "-i", wav});
  ShouldFail(run, deep +
                      ": Failed to create capture file: No such file or "
                      "directory; create the folder first: mkdir -p '" +
                      Path("no/such") + "'");
  ShouldFail(run,
             "the plugin's error: code=WRITE_FAILED message=\"Failed to "
             "create capture file: No such file or directory\" domain=errno "
             "nativeCode=2 path=" +
                 deep);
}

TEST_F(RecordFailureTest, AFolderIsNotMovedAsideForATake) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  WriteFile(Path("notes"), {1});
  ShouldFail(Corvane({"record", Path("."), "-i", wav}),
             Path(".") + " is a folder; name a file in it");
  EXPECT_TRUE(Exists(Path("notes")));
}

// Opened for reading and writing, as captures are, it would take 64 KiB and
// then hold the worker for as long as nobody reads.
TEST_F(RecordFailureTest, APipeIsRefused) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  ASSERT_EQ(mkfifo(take_.c_str(), 0600), 0);
  ShouldFail(Corvane({"record", take_, "-i", wav}),
             take_ + " is a pipe, which keeps nothing; name a file");
}

// The kernel's own refusal, in the middle of a frame: the limit on a file's
// size works as a full disk does, and needs no disk to fill.
TEST_F(RecordFailureTest, AFileThatMayNotGrowEndsTheTakeInThreeSentences) {
  const std::string wav = MakeWav("in.wav", Noise(k20Seconds));
  const ChildResult run =
      CorvaneInShell("ulimit -f 16", "", {"record", take_, "-i", wav});

  const size_t frames = SplitFrames(ReadFile(take_)).size();
  const Words said = Lines(run.err);
  ASSERT_EQ(said.size(), 5U) << run.err;
  EXPECT_EQ(said[0].rfind("info: start capture=", 0), 0U);
  EXPECT_EQ(said[1].rfind("info: AAC encoder aac started", 0), 0U);
  EXPECT_EQ(said[2], "corvane: " + take_ +
                         ": Failed to append AAC frame: File too large");
  EXPECT_EQ(said[3], "corvane: " + take_ + ": the capture is whole up to " +
                         corvane::clock_tenths(FramesToMs(frames, 48000)) +
                         " and sealed");
  EXPECT_EQ(said[4],
            "corvane: raise the file size limit (ulimit -f), or record "
            "shorter takes; then continue it with: corvane resume '" +
                take_ + "' -i REST");
  EXPECT_EQ(run.status, 1);
  EXPECT_LE(FileSize(take_), 16 * 512);
  const nlohmann::json result = nlohmann::json::parse(run.out);
  EXPECT_EQ(result["bytes"], FileSize(take_));
  EXPECT_EQ(result["endedBy"], "error");
  EXPECT_LT(result["sampleFrames"], k20Seconds);
}

TEST_F(RecordFailureTest, AllThatThePluginSaysIsThereToAskFor) {
  const std::string wav = MakeWav("in.wav", Noise(k20Seconds));
  const ChildResult run = CorvaneInShell(
      "ulimit -f 16", "", {"record", "--verbose", take_, "-i", wav});
  ShouldFail(run,
             "the plugin's error: code=WRITE_FAILED message=\"Failed to "
             "append AAC frame: File too large\" domain=errno nativeCode=27 "
             "path=" +
                 take_);
  // Every append that was under way failed, which is one line and a count.
  EXPECT_EQ(CountOf("error: append failed: WRITE_FAILED", run.err), 1);
  EXPECT_EQ(CountOf("info: stop end capture=", run.err), 1);
}

TEST_F(RecordFailureTest, QuietLeavesTheErrorsAlone) {
  const std::string wav = MakeWav("in.wav", Noise(k20Seconds));
  const ChildResult failed = CorvaneInShell(
      "ulimit -f 16", "", {"record", "--quiet", take_, "-i", wav});
  EXPECT_EQ(Lines(failed.err).size(), 3U) << failed.err;
  EXPECT_EQ(CountOf("corvane: ", failed.err), 3);
  const ChildResult done = Corvane({"record", "-q", take_, "-i", wav});
  EXPECT_EQ(done.status, 0);
  EXPECT_EQ(done.err, "");
}

TEST_F(RecordFailureTest, ADeviceIsRefused) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  ASSERT_EQ(symlink("/dev/full", take_.c_str()), 0);
  ShouldFail(
      Corvane({"record", take_, "-i", wav}),
      take_ + " is a device or a socket, which keeps nothing; name a file");
}

// The result would be written over the first frames.
TEST_F(RecordFailureTest, TheFileThatTheResultGoesToIsRefused) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  WriteFile(take_, {});
  ShouldFail(CorvaneInShell("", ">'" + take_ + "'",
                            {"record", "/dev/stdout", "-i", wav}),
             "/dev/stdout is where the result goes; name another file");
}

TEST_F(RecordFailureTest, AnOutputThatNobodyReadsFailsButKeepsTheTake) {
  ChildSetup setup;
  setup.output_is_closed = true;
  ShouldFail(
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000))}, setup),
      "the result could not be written to standard output: Broken "
      "pipe; the take itself is sealed in " +
          take_ + Figures());
  TakeIsSealed();
}

TEST_F(RecordFailureTest, AFullOutputFailsButKeepsTheTake) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  ShouldFail(CorvaneInShell("", ">/dev/full", {"record", take_, "-i", wav}),
             "the result could not be written to standard output: No space "
             "left on device; the take itself is sealed in " +
                 take_ + Figures());
  TakeIsSealed();
}

// The capture would otherwise be opened as descriptor 1, and the result would
// be written into it.
TEST_F(RecordFailureTest, AClosedOutputNeverEndsUpInTheTake) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  ShouldFail(CorvaneInShell("", ">&-", {"record", take_, "-i", wav}),
             "the result could not be written to standard output: Bad file "
             "descriptor; the take itself is sealed in " +
                 take_ + Figures());
  TakeIsSealed();
}

TEST_F(RecordFailureTest, AClosedInputIsNamed) {
  ShouldFail(
      CorvaneInShell("", "<&-",
                     {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}),
      "standard input: reading stopped early: Bad file descriptor");
}

TEST_F(RecordFailureTest, AnInputThatEndsEarlyIsNamedAndTheTakeSealed) {
  const std::string flac = Path("in.flac");
  WriteShorts(flac, SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 48000, 1,
              Samples(Noise(48000)));
  TruncateFile(flac, static_cast<size_t>(FileSize(flac)) / 2);
  const ChildResult run = Corvane({"record", take_, "-i", flac});

  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("corvane: " + flac + ": "), std::string::npos)
      << run.err;
  TakeIsSealed();
  const nlohmann::json result = nlohmann::json::parse(run.out);
  EXPECT_EQ(result["bytes"], FileSize(take_));
  EXPECT_EQ(result["endedBy"], "error");
}

// Not a failure: the take is whole, and the user hears what was left out.
TEST_F(RecordFailureTest, BytesThatMakeNoSampleFrameAreMentioned) {
  Bytes pcm = Sine(4096, 2);
  pcm.resize(pcm.size() - 1);
  const ChildResult run =
      CorvaneFed(pcm, {"record", take_, "-i", "-", "-r", "48000", "-c", "2"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(nlohmann::json::parse(run.out)["sampleFrames"], 4095);
  EXPECT_EQ(Lines(run.err).back(),
            "corvane: standard input: it ended inside a sample frame, and 3 "
            "byte(s) were left out; check that it is s16le with the channels "
            "that -c says");
}

}  // namespace
}  // namespace corvane_test
