// A take that a signal ends is a take that is done.
#include <csignal>
#include <cstring>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

constexpr size_t kOneMinute = 2880000;  // at 48000 Hz

class RecordSignalTest : public ProgramTest,
                         public ::testing::WithParamInterface<int> {
 protected:
  std::unique_ptr<Child> StartPiped() {
    ChildSetup setup;
    setup.input_is_pipe = true;
    return StartCorvane(piped_, setup);
  }

  const std::string take_ = Path("take.aac");
  const Words piped_ = {"record", "-i", "-", "-r", "48000", "-c", "1", take_};
};

TEST_P(RecordSignalTest, WhatCameIsSealedWhileThePipeIsSilent) {
  const Bytes pcm = Sine(48000);
  const auto child = StartPiped();
  child->Write(pcm);
  child->AwaitError("AAC encoder");
  child->Signal(GetParam());
  const ChildResult run = child->Wait();

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_EQ(result["endedBy"], "signal");
  EXPECT_EQ(result["bytes"], FileSize(take_));
  EXPECT_GE(result["sampleFrames"],
            (pcm.size() - Child::kInputPipeSize) / sizeof(int16_t));
  EXPECT_EQ(result["durationMs"],
            FramesToMs(SplitFrames(ReadFile(take_)).size(), 48000));
}

TEST_P(RecordSignalTest, ASignalBeforeAnyAudioLeavesNothing) {
  ChildSetup setup;
  setup.input_is_pipe = true;
  setup.terminal_columns = 80;
  const auto child = StartCorvane(piped_, setup);
  child->AwaitError("waiting for audio");
  child->Signal(GetParam());
  const ChildResult run = child->Wait();

  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("standard input: stopped before any audio came; " +
                         take_ + " is as it was"),
            std::string::npos)
      << run.err;
  EXPECT_FALSE(Exists(take_));
}

// As under nohup(1), and in the background of a shell.
TEST_P(RecordSignalTest, ASignalThatTheParentIgnoresStaysIgnored) {
  ChildSetup setup;
  setup.input_is_pipe = true;
  Words argv = {"/bin/sh", "-c", "trap '' HUP INT TERM; exec \"$@\"", "sh",
                CORVANE_PROGRAM};
  argv.insert(argv.end(), piped_.begin(), piped_.end());
  Child child(argv, setup);
  child.Write(Sine(48000));
  child.AwaitError("AAC encoder");
  child.Signal(GetParam());
  child.Write(Sine(48000));
  child.CloseInput();
  const ChildResult run = child.Wait();

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_EQ(result["endedBy"], "input");
  EXPECT_EQ(result["sampleFrames"], 96000);
}

TEST_P(RecordSignalTest, AFileIsLeftOffWhereItIs) {
  const std::string wav = MakeWav("in.wav", Silence(kOneMinute));
  const auto child = StartCorvane({"record", take_, "-i", wav, "--realtime"});
  child->AwaitError("AAC encoder");
  child->Signal(GetParam());
  const ChildResult run = child->Wait();

  EXPECT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_EQ(result["endedBy"], "signal");
  EXPECT_LT(result["sampleFrames"], kOneMinute);
  EXPECT_EQ(result["bytes"], FileSize(take_));
}

INSTANTIATE_TEST_SUITE_P(Signals, RecordSignalTest,
                         ::testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& param_info) {
                           return std::string(sigabbrev_np(param_info.param));
                         });

}  // namespace
}  // namespace corvane_test
