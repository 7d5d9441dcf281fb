// `corvane record` where all goes well.
#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class RecordTest : public ProgramTest {
 protected:
  const std::string take_ = Path("take.aac");
};

TEST_F(RecordTest, TheResultIsAloneOnStandardOutput) {
  ChildSetup setup;
  setup.environment["G_MESSAGES_DEBUG"] = "all";
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000))}, setup);

  EXPECT_EQ(run.status, 0) << run.err;
  ASSERT_EQ(Lines(run.out).size(), 1U) << run.out;
  const json result = json::parse(run.out);
  Words keys;
  for (const auto& item : result.items()) {
    keys.push_back(item.key());
  }
  const Words reply_keys = {"bytes", "durationMs", "droppedAppendBytes", "path",
                            "sourceDurationMs"};
  for (const std::string& key : reply_keys) {
    EXPECT_EQ(std::count(keys.begin(), keys.end(), key), 1) << key;
  }
}

TEST_F(RecordTest, FiguresAreThoseOfTheFile) {
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000 + 7))});
  ASSERT_EQ(run.status, 0) << run.err;

  const json result = json::parse(run.out);
  const size_t frames = SplitFrames(ReadFile(take_)).size();
  EXPECT_EQ(result["path"], take_);
  EXPECT_EQ(result["bytes"], FileSize(take_));
  EXPECT_EQ(result["durationMs"], FramesToMs(frames, 48000));
  EXPECT_EQ(result["sourceDurationMs"], result["durationMs"]);
  EXPECT_EQ(result["droppedAppendBytes"], 0);
  EXPECT_EQ(result["sampleRate"], 48000);
  EXPECT_EQ(result["channels"], 1);
  EXPECT_EQ(result["sampleFrames"], 48000 + 7);
  EXPECT_EQ(result["endedBy"], "input");
}

TEST_F(RecordTest, EachLogLineIsWrittenOnce) {
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(4096))});
  ASSERT_EQ(run.status, 0) << run.err;

  const std::string bytes = std::to_string(FileSize(take_));
  const Words expected = {
      "info: start capture=" + take_ + " rate=48000 channels=1 bitRate=64000",
      "info: AAC encoder aac started rate=48000 channels=1 bitRate=64000",
      "info: closed capture on stop: " + take_ + " frames=5",
      "info: stop start capture=" + take_ + " droppedAppendBytes=0",
      "info: stop end capture=" + take_ + " bytes=" + bytes +
          " durationMs=106 skippedBytes=0 droppedAppendBytes=0",
  };
  EXPECT_EQ(Lines(run.err), expected);
}

TEST_F(RecordTest, RawInputGivesTheCaptureThatItsFileGives) {
  const Bytes pcm = Sine(20000, 2, 44100);
  const std::string wav = MakeWav("in.wav", pcm, 44100, 2);
  ASSERT_EQ(Corvane({"record", take_, "-i", wav}).status, 0);

  const ChildResult run = CorvaneFed(
      pcm, {"record", "-i", "-", "-r", "44100", "-c", "2", Path("raw.aac")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["sampleFrames"], 20000);
  EXPECT_EQ(ReadFile(Path("raw.aac")), ReadFile(take_));
}

TEST_F(RecordTest, TheChunkSizeLeavesNoTrace) {
  const std::string wav = MakeWav("in.wav", Noise(30000));
  ASSERT_EQ(Corvane({"record", take_, "-i", wav}).status, 0);
  for (const std::string chunk_ms : {"1", "7", "1000"}) {
    const std::string other = Path(chunk_ms + ".aac");
    const ChildResult run =
        Corvane({"record", other, "-i", wav, "--chunk-ms", chunk_ms});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(ReadFile(other), ReadFile(take_)) << chunk_ms << " ms";
  }
}

TEST_F(RecordTest, TheBitRateReachesTheEncoder) {
  const std::string wav = MakeWav("in.wav", Noise(48000));
  const ChildResult low = Corvane({"record", take_, "-i", wav, "-b", "32000"});
  const ChildResult high =
      Corvane({"record", Path("high.aac"), "-i", wav, "-b", "128000"});
  ASSERT_EQ(low.status, 0) << low.err;
  ASSERT_EQ(high.status, 0) << high.err;
  EXPECT_EQ(json::parse(low.out)["bitRate"], 32000);
  EXPECT_EQ(json::parse(high.out)["bitRate"], 128000);
  EXPECT_LT(FileSize(take_) * 2, FileSize(Path("high.aac")));
}

TEST_F(RecordTest, TheBitRateNotGivenIsTheOneReported) {
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(4096))});
  ASSERT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_NE(run.err.find(" bitRate=" + result["bitRate"].dump() + "\n"),
            std::string::npos)
      << run.out << run.err;
}

TEST_F(RecordTest, OlderAudioIsKeptAndItsPlaceNamed) {
  const Bytes older = {1, 2, 3};
  WriteFile(take_, older);
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(4096))});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(Path("take.orphan.aac")), older);
  EXPECT_EQ(Lines(run.err).front(), "warning: preserved orphan audio " + take_ +
                                        " as " + Path("take.orphan.aac"));
}

TEST_F(RecordTest, RealtimeIsNoFasterThanTheAudioPlays) {
  const std::string wav = MakeWav("in.wav", Sine(48000 / 2));
  const auto before = std::chrono::steady_clock::now();
  const ChildResult run = Corvane({"record", take_, "-i", wav, "--realtime"});
  const auto took = std::chrono::steady_clock::now() - before;
  EXPECT_EQ(run.status, 0) << run.err;
  // The last chunk of 20 ms goes out when it begins to play.
  EXPECT_GE(took, std::chrono::milliseconds(480));
}

TEST_F(RecordTest, AnyNameIsTakenAsItIs) {
  const std::string wav = MakeWav("in.wav", Sine(4096));
  const std::string odd = Path("-a \xff\n b=c.aac");
  const ChildResult run = Corvane({"record", "-i", wav, "--", odd});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Exists(odd));
  EXPECT_EQ(json::parse(run.out)["bytes"], FileSize(odd));
  // The line break in it breaks no line.
  EXPECT_EQ(Lines(run.err).size(), 5U) << run.err;
}

}  // namespace
}  // namespace corvane_test
