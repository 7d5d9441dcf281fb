// Devices that can't be opened: the sentence, with its way out, and nothing
// touched.
#include <csignal>

#include "host/record_fixture.h"
#include "host/sound_config.h"

namespace corvane_test {
namespace {

class DeviceRefusalTest : public ProgramTest {
 protected:
  ChildResult Run(const std::string& devices, const Words& arguments) {
    const SoundConfig config(devices);
    ChildSetup setup;
    setup.environment = config.environment();
    return Corvane(arguments, setup);
  }

  // What recording from `device`, the default one if empty, is answered with.
  void ShouldSay(const std::string& devices, const std::string& sentence,
                 const std::string& device = "default") {
    const ChildResult run = Run(devices, {"record", "-D", device, take_});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "corvane: " + sentence + "\n");
    EXPECT_FALSE(Exists(take_));
  }

  const std::string take_ = Path("take.aac");
};

// Errors of the open itself, by a device that answers with them.
std::string Unopened(const std::string& open) {
  return "pcm.!default { type corvane_faults open " + open + " }\n" +
         "pcm.desk { type corvane_faults open " + open + " }\n";
}

const std::string kBusy =
    "another program is recording from it; see which with: fuser -v "
    "/dev/snd/*, or take a device that is shared, as -D default is where a "
    "sound server runs";
const std::string kDenied =
    "you may not record from it; join the group \"audio\" with: sudo usermod "
    "-aG audio $USER, and log in again";
const std::string kUnknown =
    "there is no such device; see those there are with: corvane devices";

TEST_F(DeviceRefusalTest, ABusyDeviceSaysWhoHasItAndWhatIsShared) {
  ShouldSay(Unopened("busy"), "device default: " + kBusy);
  ShouldSay(Unopened("busy"), "device desk: " + kBusy, "desk");
}

TEST_F(DeviceRefusalTest, ADeviceThatOnlyOthersMayOpenNamesTheGroup) {
  ShouldSay(Unopened("denied"), "device default: " + kDenied);
  ShouldSay(Unopened("forbidden"), "device default: " + kDenied);
}

TEST_F(DeviceRefusalTest, ADeviceThatIsUnpluggedNamesTheList) {
  ShouldSay(Unopened("unplugged"), "device desk: " + kUnknown, "desk");
  ShouldSay(Unopened("absent"), "device desk: " + kUnknown, "desk");
  ShouldSay(Unopened("busy"), "device lapel: " + kUnknown, "lapel");
}

TEST_F(DeviceRefusalTest, AnyOtherErrorIsNamedWithTheList) {
  ShouldSay(Unopened("broken"),
            "device default: it can't be opened (Input/output error); see what "
            "else there is with: corvane devices");
}

// Some plug-ins open the device behind them no sooner than that.
TEST_F(DeviceRefusalTest, ADeviceThatFailsWhenItsFormatIsSettledSaysTheSame) {
  ShouldSay("pcm.!default { type corvane_faults settle denied }\n",
            "device default: " + kDenied);
}

// As a sound server that was stopped.
TEST_F(DeviceRefusalTest, ADeviceThatDoesNotAnswerIsSeenToBeWaitedFor) {
  const SoundConfig config("pcm.!default { type corvane_faults open stuck }\n");
  ChildSetup setup;
  setup.terminal_columns = 80;
  setup.environment = config.environment();
  setup.environment["TERM"] = "xterm";
  const auto record = StartCorvane({"record", "-D", "default", take_}, setup);
  const auto list = StartCorvane({"devices"}, setup);
  record->AwaitError("waiting for device default");
  list->AwaitError("looking for sound devices");
  record->Signal(SIGINT);
  list->Signal(SIGINT);
  EXPECT_EQ(record->Wait().status, -1);
  EXPECT_EQ(list->Wait().status, -1);
  EXPECT_FALSE(Exists(take_));
}

TEST_F(DeviceRefusalTest, ACaptureThatWasToGoOnIsUntouched) {
  const Bytes older = {1, 2, 3};
  WriteFile(take_, older);
  for (const char* const command : {"record", "resume"}) {
    const ChildResult run =
        Run(Unopened("busy"), {command, take_, "-D", "default"});
    EXPECT_EQ(run.status, 1) << command;
    EXPECT_EQ(ReadFile(take_), older) << command;
  }
}

}  // namespace
}  // namespace corvane_test
