// What scripts see of a take that is paused, marked, limited and split.
#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class RecordControlTest : public ProgramTest {
 protected:
  // With a second of audio in it by now.
  std::unique_ptr<Child> StartPiped() {
    ChildSetup setup;
    setup.input_is_pipe = true;
    auto child = StartCorvane(
        {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}, setup);
    child->Write(Sine(48000));
    child->AwaitError("AAC encoder");
    return child;
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(RecordControlTest, Usr1PausesAndGoesOn) {
  const auto child = StartPiped();
  child->Signal(SIGUSR1);
  child->AwaitError("corvane: paused at 0:0");
  child->Signal(SIGUSR1);
  child->AwaitError("corvane: goes on at 0:0");
  child->CloseInput();
  const ChildResult run = child->Wait();

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_GE(result["sampleFrames"], 48000 - Child::kInputPipeSize / 2);
  EXPECT_EQ(result["droppedAppendBytes"], 0);
}

TEST_F(RecordControlTest, ATakeThatIsPausedCanBeStopped) {
  const auto child = StartPiped();
  child->Signal(SIGUSR1);
  child->AwaitError("corvane: paused at");
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();

  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["endedBy"], "signal");
}

TEST_F(RecordControlTest, Usr2MarksTheMoment) {
  const auto child = StartPiped();
  child->Signal(SIGUSR2);
  child->AwaitError("corvane: marked 0:0");
  child->CloseInput();
  const ChildResult run = child->Wait();

  const json marks = json::parse(run.out)["marks"];
  ASSERT_EQ(marks.size(), 1U) << run.out;
  EXPECT_LE(marks[0], 1000);
}

TEST_F(RecordControlTest, ALimitEndsTheTake) {
  const std::string wav = MakeWav("in.wav", Sine(480000));
  const ChildResult run =
      Corvane({"record", take_, "-i", wav, "--duration", "0:02.5"});

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_EQ(result["endedBy"], "duration");
  EXPECT_EQ(result["sampleFrames"], 120000);
}

TEST_F(RecordControlTest, ALimitOfAResumedTakeCountsItsOwnAudio) {
  const std::string wav = MakeWav("in.wav", Sine(480000));
  Corvane({"record", take_, "-i", wav, "--duration", "1"});
  const ChildResult run =
      Corvane({"resume", take_, "-i", wav, "--duration", "1"});

  const json result = json::parse(run.out);
  EXPECT_EQ(result["endedBy"], "duration");
  EXPECT_EQ(result["sampleFrames"], 48000);
  EXPECT_GT(result["durationMs"], 2000);
}

TEST_F(RecordControlTest, TheFiguresOfASplitTakeAreThoseOfItsParts) {
  const std::string wav = MakeWav("in.wav", Sine(120000));
  const ChildResult run =
      Corvane({"record", take_, "-i", wav, "--split", "1s"});

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  ASSERT_EQ(result["parts"].size(), 3U) << run.out;
  int64_t bytes = 0;
  int64_t frames = 0;
  for (const json& part : result["parts"]) {
    EXPECT_EQ(part["bytes"], FileSize(part["path"]));
    bytes += part["bytes"].get<int64_t>();
    frames += part["sampleFrames"].get<int64_t>();
    EXPECT_EQ(DecoderComplaints(part["path"]), "");
  }
  EXPECT_EQ(result["parts"][0]["path"], Path("take-001.aac"));
  EXPECT_EQ(result["parts"][0]["sampleFrames"], 46 * 1024)
      << "a second is 46 whole frames of 1024";
  EXPECT_EQ(result["bytes"], bytes);
  EXPECT_EQ(result["sampleFrames"], 120000);
  EXPECT_EQ(frames, 120000);
  EXPECT_FALSE(result.contains("path")) << "none of them is the take";
}

// Under one name the files of two takes would look like one's.
TEST_F(RecordControlTest, APartOfAnEarlierTakeIsNamed) {
  const std::string wav = MakeWav("in.wav", Sine(120000));
  Corvane({"record", take_, "-i", wav, "--split", "1s"});
  const ChildResult run = Corvane(
      {"record", take_, "-i", wav, "--split", "1s", "--duration", "1.5"});

  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("corvane: " + Path("take-003.aac") +
                         ": warning: it is there from an earlier take, and "
                         "none of this one's parts"),
            std::string::npos)
      << run.err;
}

TEST_F(RecordControlTest, WhatIsNoTimeIsRefused) {
  const std::string wav = MakeWav("in.wav", Sine(4800));
  for (const char* word : {"nan", "-1", "0", "", "5x"}) {
    const ChildResult run =
        Corvane({"record", take_, "-i", wav, "--duration", word});
    EXPECT_EQ(run.status, 2) << word;
    EXPECT_NE(run.err.find("--duration: needs a time, as in 90 (seconds), 5m, "
                           "1:30:00, and not '" +
                           std::string(word) + "'"),
              std::string::npos)
        << run.err;
  }
  const ChildResult run =
      Corvane({"record", take_, "-i", wav, "--split", "0.9"});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("--split: needs a second at least, and not '0.9'"),
            std::string::npos)
      << run.err;
  EXPECT_FALSE(Exists(take_));
}

}  // namespace
}  // namespace corvane_test
