// Nothing is touched before the first audio is there.
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class FirstAudioTest : public ProgramTest {
 protected:
  Words Folder() const {
    Words names;
    for (const char* name : {"take.aac", "take.orphan.aac"}) {
      if (Exists(Path(name))) names.emplace_back(name);
    }
    return names;
  }

  const std::string take_ = Path("take.aac");
  const Words record_ = {"record", take_, "-i", "-", "-r", "48000", "-c", "1"};
};

TEST_F(FirstAudioTest, AnUpstreamThatFailedIsNoTake) {
  ShouldFail(CorvaneFed({}, record_),
             "standard input: no audio came; " + take_ + " is as it was");
  EXPECT_EQ(Folder(), Words());
}

TEST_F(FirstAudioTest, AnOlderTakeIsNotMovedForNothing) {
  WriteFile(take_, {1, 2, 3});
  ShouldFail(CorvaneFed({}, record_),
             "standard input: no audio came; " + take_ + " is as it was");
  EXPECT_EQ(Folder(), Words{"take.aac"});
  EXPECT_EQ(ReadFile(take_), Bytes({1, 2, 3}));
}

TEST_F(FirstAudioTest, ATakeThatWouldGoOnIsNoLongerTornForNothing) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  ASSERT_EQ(Corvane({"record", take_, "-i", wav}).status, 0);
  TruncateFile(take_, static_cast<size_t>(FileSize(take_)) - 3);
  const Bytes torn = ReadFile(take_);
  const ChildResult run = CorvaneFed({}, {"resume", take_, "-i", "-"});
  ShouldFail(run, "standard input: no audio came; " + take_ + " is as it was");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadFile(take_), torn);
}

// Half a sample is no audio yet.
TEST_F(FirstAudioTest, AByteMovesNoOlderTake) {
  WriteFile(take_, {1, 2, 3});
  ShouldFail(CorvaneFed({'x'}, record_),
             "standard input: no audio came; " + take_ + " is as it was");
  EXPECT_EQ(Folder(), Words{"take.aac"});
}

TEST_F(FirstAudioTest, AnAudioFileWithoutSoundIsNoTake) {
  const std::string wav = MakeWav("in.wav", {});
  ShouldFail(Corvane({"record", take_, "-i", wav}),
             wav + ": no audio came; " + take_ + " is as it was");
  EXPECT_EQ(Folder(), Words());
}

TEST_F(FirstAudioTest, AStallIsShownAndInTheResult) {
  ChildSetup setup;
  setup.input_is_pipe = true;
  setup.terminal_columns = 80;
  setup.environment["NO_COLOR"] = "1";
  const auto child = StartCorvane(record_, setup);
  child->AwaitError("no audio for 0:02");
  child->Write(Sine(48000));
  child->AwaitError("AAC encoder aac started");
  child->AwaitError("dB  no audio for 0:02");
  child->CloseInput();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  const auto result = nlohmann::json::parse(run.out);
  EXPECT_GE(result["longestGapMs"], 2000);
  EXPECT_GE(result["wallMs"], result["longestGapMs"]);
  EXPECT_EQ(result["endedBy"], "input");
}

}  // namespace
}  // namespace corvane_test
