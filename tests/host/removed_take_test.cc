// A capture that goes away while it is written.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class RemovedTakeTest : public ProgramTest {
 protected:
  RemovedTakeTest() { mkdir(Path("interview").c_str(), 0755); }

  std::unique_ptr<Child> StartTake() {
    ChildSetup setup;
    setup.input_is_pipe = true;
    auto child = StartCorvane(
        {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}, setup);
    child->Write(Noise(48000));
    child->AwaitError("AAC encoder aac started");
    return child;
  }

  const std::string take_ = Path("interview/take.aac");
};

// The source goes on: nothing but the look at the file can end the take.
TEST_F(RemovedTakeTest, ARemovedFolderEndsTheTakeAndTheAudioIsSavedBeside) {
  const auto child = StartTake();
  std::filesystem::remove_all(Path("interview"));
  const std::string saved = Path("take.rescued.aac");
  child->AwaitError("it was removed while it was written");
  const ChildResult run = child->Wait();
  ShouldFail(run, take_ +
                      ": it was removed while it was written; what was "
                      "recorded is saved in " +
                      saved);
  const json result = json::parse(run.out);
  EXPECT_EQ(result["path"], saved);
  EXPECT_EQ(result["endedBy"], "removed");
  EXPECT_EQ(SplitFrames(ReadFile(saved)).size(), 48U);
  EXPECT_EQ(DecoderComplaints(saved), "");
}

TEST_F(RemovedTakeTest, ARemovedFileIsSavedInItsFolderUnderAFreeName) {
  WriteFile(Path("interview/take.rescued.aac"), {1, 2, 3});
  const auto child = StartTake();
  ASSERT_EQ(unlink(take_.c_str()), 0);
  child->CloseInput();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 1);
  const std::string saved = Path("interview/take.rescued2.aac");
  EXPECT_EQ(json::parse(run.out)["path"], saved);
  EXPECT_EQ(SplitFrames(ReadFile(saved)).size(), 48U);
  EXPECT_EQ(FileSize(Path("interview/take.rescued.aac")), 3);
}

TEST_F(RemovedTakeTest, AMovedFileIsSealedWhereItIs) {
  const auto child = StartTake();
  const std::string moved = Path("elsewhere.aac");
  ASSERT_EQ(rename(take_.c_str(), moved.c_str()), 0);
  WriteFile(take_, {1, 2, 3});
  child->CloseInput();
  const ChildResult run = child->Wait();
  ShouldFail(
      run,
      take_ + ": it was moved while it was written; the take is in " + moved);
  EXPECT_EQ(json::parse(run.out)["path"], moved);
  EXPECT_EQ(SplitFrames(ReadFile(moved)).size(), 48U);
  EXPECT_EQ(ReadFile(take_), Bytes({1, 2, 3}));
}

// Whoever holds no lock can write all the same.
TEST_F(RemovedTakeTest, FiguresThatCannotBeTheTakesAreNotPassedOff) {
  const std::string other = Path("other.aac");
  ASSERT_EQ(
      Corvane({"record", other, "-i", MakeWav("in.wav", Sine(48000))}).status,
      0);
  const auto child = StartTake();
  AppendToFile(take_, ReadFile(other));
  child->CloseInput();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find(", which can't be this take's 0:01.0: another program "
                         "has written to it"),
            std::string::npos)
      << run.err;
}

}  // namespace
}  // namespace corvane_test
