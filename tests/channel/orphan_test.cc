// What stands at the capture's path already is moved aside, never destroyed.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

const Bytes kOldAudio = {'o', 'l', 'd'};

class OrphanTest : public ChannelTest {
 protected:
  // Starts over old audio at `path` and returns where it went, as the log says.
  std::string OrphanOf(const std::string& path) {
    WriteFile(path, kOldAudio);
    TakeTranscript();
    EXPECT_EQ(Start(path), NullReply());
    Cancel();
    const std::string says = "warning: preserved orphan audio " + path + " as ";
    const std::string line = LogLines().front();
    EXPECT_EQ(line.substr(0, says.size()), says);
    const std::string slot = line.substr(says.size());
    EXPECT_EQ(ReadFile(slot), kOldAudio);
    EXPECT_EQ(FileSize(path), 0);
    return slot;
  }

  // A "start" that cannot keep the old audio: one line says why, and nothing
  // is created.
  void ExpectNotPreserved(const std::string& path, const std::string& why) {
    const Reply error =
        FileError("WRITE_FAILED",
                  "existing audio at target could not be preserved", path);
    TakeTranscript();
    Start(path);
    EXPECT_THAT(TakeTranscript(),
                ElementsAre(Error(why), Failed("start", error),
                            Answer("start", error)));
  }

  void Occupy(const std::string& name) { WriteFile(Path(name), {'x'}); }
};

TEST_F(OrphanTest, TheSlotGoesBetweenStemAndExtension) {
  ASSERT_EQ(mkdir(Path("rec.d").c_str(), 0755), 0);
  EXPECT_EQ(OrphanOf(Path("take.aac")), Path("take.orphan.aac"));
  EXPECT_EQ(OrphanOf(Path("take")), Path("take.orphan"));
  EXPECT_EQ(OrphanOf(Path("rec.d/take")), Path("rec.d/take.orphan"));
  EXPECT_EQ(OrphanOf(Path("a.b.aac")), Path("a.b.orphan.aac"));
  EXPECT_EQ(OrphanOf(Path(".aac")), Path(".orphan.aac"));
  EXPECT_EQ(OrphanOf(Path("end.")), Path("end.orphan."));
}

TEST_F(OrphanTest, NumbersFollowInPlainDecimal) {
  const std::vector<std::string> names = {"take.aac", "take", ".aac"};
  const std::vector<std::string> slots = {"take.orphan#.aac", "take.orphan#",
                                          ".orphan#.aac"};
  for (size_t i = 0; i < names.size(); ++i) {
    for (const char* number :
         {"", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10", "11"}) {
      std::string slot = slots[i];
      slot.replace(slot.find('#'), 1, number);
      EXPECT_EQ(OrphanOf(Path(names[i])), Path(slot));
    }
  }
}

TEST_F(OrphanTest, WithoutAFolderInThePathTheSlotHasNone) {
  const WorkingDir here(Path(""));
  EXPECT_EQ(OrphanOf("take.aac"), "take.orphan.aac");
  EXPECT_EQ(OrphanOf("take.aac"), "take.orphan1.aac");
  EXPECT_EQ(OrphanOf("take"), "take.orphan");
}

TEST_F(OrphanTest, TheFirstGapIsFilled) {
  Occupy("take.orphan1.aac");
  EXPECT_EQ(OrphanOf(Path("take.aac")), Path("take.orphan.aac"));
  EXPECT_EQ(OrphanOf(Path("take.aac")), Path("take.orphan2.aac"));
}

TEST_F(OrphanTest, AnEmptySlotFileIsTakenToo) {
  WriteFile(Path("take.orphan.aac"), {});
  EXPECT_EQ(OrphanOf(Path("take.aac")), Path("take.orphan1.aac"));
}

TEST_F(OrphanTest, SlotNinetyNineIsTheLast) {
  Occupy("take.orphan.aac");
  for (int n = 1; n <= 98; ++n) {
    Occupy("take.orphan" + std::to_string(n) + ".aac");
  }
  EXPECT_EQ(OrphanOf(Path("take.aac")), Path("take.orphan99.aac"));

  WriteFile(Path("take.aac"), kOldAudio);
  ExpectNotPreserved(Path("take.aac"),
                     "no free orphan slot for " + Path("take.aac"));
  EXPECT_EQ(ReadFile(Path("take.aac")), kOldAudio);
  EXPECT_EQ(ListDir(Path("")).size(), 101u);
}

TEST_F(OrphanTest, WithoutAFreeSlotAnOpenCaptureIsClosedAllTheSame) {
  const std::string path = Path("take.aac"), open = Path("open.aac");
  Occupy("take.aac");
  Occupy("take.orphan.aac");
  for (int n = 1; n <= 99; ++n) {
    Occupy("take.orphan" + std::to_string(n) + ".aac");
  }
  Start(open);
  TakeTranscript();
  const Reply error = FileError(
      "WRITE_FAILED", "existing audio at target could not be preserved", path);
  Start(path);
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(ClosedLine("start over an open session", open, 0),
                          Error("no free orphan slot for " + path),
                          Failed("start", error), Answer("start", error)));
  EXPECT_EQ(Stop(), PlainError("NOT_RECORDING", "stop with no open recording"));
}

TEST_F(OrphanTest, AFolderAtThePathIsMovedWithAllItHolds) {
  const std::string path = Path("take.aac");
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  WriteFile(path + "/inside", kOldAudio);
  EXPECT_EQ(Start(path), NullReply());
  EXPECT_EQ(ReadFile(Path("take.orphan.aac") + "/inside"), kOldAudio);
  EXPECT_EQ(FileSize(path), 0);
}

TEST_F(OrphanTest, ALinkIsMovedAndWhatItNamesStaysPut) {
  WriteFile(Path("elsewhere"), kOldAudio);
  ASSERT_EQ(symlink("elsewhere", Path("take.aac").c_str()), 0);
  EXPECT_EQ(Start(Path("take.aac")), NullReply());
  EXPECT_THAT(ListDir(Path("")),
              UnorderedElementsAre("elsewhere", "take.aac", "take.orphan.aac"));
  EXPECT_EQ(ReadFile(Path("elsewhere")), kOldAudio);
}

TEST_F(OrphanTest, ADanglingLinkHoldsNothingToPreserve) {
  ASSERT_EQ(symlink("target", Path("take.aac").c_str()), 0);
  EXPECT_EQ(Start(Path("take.aac")), NullReply());
  EXPECT_THAT(ListDir(Path("")), UnorderedElementsAre("target", "take.aac"));
}

// The slot would lie inside the very folder that is to be moved.
TEST_F(OrphanTest, AFolderNamedWithASlashCannotBeMoved) {
  const std::string path = Path("take/");
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  WriteFile(Path("take/inside"), kOldAudio);
  ExpectNotPreserved(path, "could not preserve orphan audio " + path + ": " +
                               std::strerror(EINVAL));
  EXPECT_THAT(ListDir(path), ElementsAre("inside"));
}

// No stat of a slot succeeds, so the first one counts as free.
TEST_F(OrphanTest, AFailedMoveLeavesTheOldAudioInPlace) {
  const std::string path = Path(std::string(251, 'x') + ".aac");
  WriteFile(path, kOldAudio);
  ExpectNotPreserved(path, "could not preserve orphan audio " + path + ": " +
                               std::strerror(ENAMETOOLONG));
  EXPECT_EQ(ReadFile(path), kOldAudio);
}

}  // namespace
}  // namespace corvane_test
