// `corvane info` of a take that is under way.
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/small_capture.h"
#include "looks/file_look.h"
#include "support/pcm.h"
#include "take/capture_lock.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class InfoInUseTest : public ProgramTest {
 protected:
  const std::string take_ = Path("take.aac");
};

TEST_F(InfoInUseTest, ATakeThatIsBeingRecordedIsLookedAtAndGoesOn) {
  ChildSetup setup;
  setup.input_is_pipe = true;
  const auto recorder = StartCorvane(
      {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}, setup);
  recorder->Write(Noise(48000));
  recorder->AwaitError("AAC encoder aac started");
  const ChildResult table = Corvane({"info", take_});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_EQ(Lines(table.out).back(),
            "  in use    by process " + std::to_string(recorder->pid()));
  EXPECT_EQ(table.out.find("corvane finalize"), std::string::npos) << table.out;
  const ChildResult object = Corvane({"info", "--json", take_});
  EXPECT_EQ(object.status, 0) << object.err;
  EXPECT_EQ(json::parse(object.out)["inUse"], true);
  EXPECT_EQ(json::parse(object.out)["inUseBy"], recorder->pid());

  recorder->CloseInput();
  const ChildResult run = recorder->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["sampleFrames"], 48000);
  EXPECT_EQ(json::parse(Corvane({"info", "--json", take_}).out)["inUse"],
            false);
}

TEST_F(InfoInUseTest, ATakeInUseThatHoldsNoFrameYetIsACapture) {
  for (const Bytes& content : {Bytes(), Slice(FrameAt(3), 0, 40)}) {
    WriteFile(take_, content);
    const corvane::FileLook look = corvane::look_at_file(take_, true);
    EXPECT_TRUE(look.is_capture()) << look.error;
    ASSERT_TRUE(look.capture);
    EXPECT_EQ(look.capture->frames(), 0);
    EXPECT_FALSE(corvane::look_at_file(take_, false).is_capture());
  }
}

TEST_F(InfoInUseTest, ATornEndOfATakeInUseIsNotToBeCutOff) {
  WriteFile(take_, Concat(Capture(20), Slice(FrameAt(3), 0, 40)));
  corvane::CaptureLock lock;
  ASSERT_FALSE(lock.Take(take_));
  const ChildResult run = Corvane({"info", take_});
  EXPECT_EQ(run.status, 0) << run.err;
  const Words lines = Lines(run.out);
  ASSERT_EQ(lines.size(), 6U) << run.out;
  EXPECT_EQ(lines[4], "  torn      40 bytes, maybe not whole yet");
  EXPECT_EQ(lines[5], "  in use    by process " + std::to_string(getpid()));
}

TEST_F(InfoInUseTest, ATakeThatGrowsDuringTheLookHasNoNegativeFigures) {
  WriteFile(take_, Capture(20));
  const corvane::RegularFile file(take_);
  AppendToFile(take_, Capture(5));
  const corvane::CaptureLook look = corvane::look_at_capture(file, false);
  EXPECT_EQ(look.frames(), 25);
  EXPECT_EQ(look.size, 2500);
  EXPECT_EQ(look.torn_bytes(), 0);
}

}  // namespace
}  // namespace corvane_test
