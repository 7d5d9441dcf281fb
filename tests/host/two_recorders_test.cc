// Two programs and one capture: whoever comes second leaves it alone.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class TwoRecordersTest : public ProgramTest {
 protected:
  // A take that is under way, with so much audio on its way into it.
  std::unique_ptr<Child> StartFirst(size_t samples = 48000) {
    ChildSetup setup;
    setup.input_is_pipe = true;
    auto child = StartCorvane(
        {"record", take_, "-i", "-", "-r", "48000", "-c", "1"}, setup);
    child->Write(Noise(samples));
    child->AwaitError("AAC encoder aac started");
    return child;
  }

  void ShouldRefuse(const Child& first, const Words& arguments) {
    ShouldFail(Corvane(arguments),
               take_ + ": another corvane is at work on it (process " +
                   std::to_string(first.pid()) +
                   "); wait until that has ended, or name another file");
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(TwoRecordersTest, EachCommandLeavesALiveTakeAlone) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  const auto first = StartFirst();
  ShouldRefuse(*first, {"record", take_, "-i", wav});
  ShouldRefuse(*first, {"record", "--force", take_, "-i", wav});
  ShouldRefuse(*first, {"resume", take_, "-i", wav});
  ShouldRefuse(*first, {"finalize", take_});
  ShouldRefuse(*first, {"repair-wav", take_, "-r", "48000", "-c", "1"});
  EXPECT_FALSE(Exists(Path("take.orphan.aac")));

  first->CloseInput();
  const ChildResult run = first->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(nlohmann::json::parse(run.out)["sampleFrames"], 48000);
  EXPECT_EQ(SplitFrames(ReadFile(take_)).size(), 48U);
}

TEST_F(TwoRecordersTest, AKilledTakeIsFreeAtOnce) {
  // Two seconds at most are not in the file yet.
  const auto first = StartFirst(3 * 48000);
  first->Signal(SIGKILL);
  first->Wait();
  EXPECT_EQ(Corvane({"finalize", take_}).status, 0);
}

TEST_F(TwoRecordersTest, AResumedTakeIsHeldBeforeItsFirstAudio) {
  ASSERT_EQ(
      Corvane({"record", take_, "-i", MakeWav("a.wav", Sine(48000))}).status,
      0);
  ChildSetup setup;
  setup.input_is_pipe = true;
  const auto first = StartCorvane({"resume", take_, "-i", "-"}, setup);
  first->AwaitError("nothing is torn");
  ShouldRefuse(*first, {"finalize", take_});
  first->CloseInput();
  first->Wait();
}

}  // namespace
}  // namespace corvane_test
