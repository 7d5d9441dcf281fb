// SIGKILL inside the calls that change a file without appending to it: the cut
// of a seal, the move to an orphan slot, the header of a WAV file.
#include "crash/kill_fixture.h"
#include "support/adts_frames.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

const std::vector<StopPoint> kSealPoints = {{0, "ftruncate", 1, false},
                                            {0, "ftruncate", 1, true},
                                            {0, "fsync", 1, false},
                                            {0, "fsync", 1, true},
                                            {0, "close", 1, true}};
const std::vector<StopPoint> kStartPoints = {{0, "rename", 1, false},
                                             {0, "rename", 1, true},
                                             {0, "open", 1, false},
                                             {0, "open", 1, true}};
const std::vector<StopPoint> kWavPoints = {
    {0, "fopen", 1, true},  {0, "fwrite", 1, false}, {0, "fwrite", 1, true},
    {0, "fflush", 1, true}, {0, "fsync", 1, false},  {0, "fclose", 1, true}};

std::string Text(const StopPoint& point) {
  return (point.after ? "after " : "before ") + point.function;
}

class KillPointTest : public KillTest {
 protected:
  // A short stereo take of whole frames.
  Bytes Old() {
    return Uninterrupted({"", 44100, 2, {"start", "append=6000", "stop"}});
  }
  Take Stereo(const std::string& name, const std::string& step) {
    return {Path(name), 44100, 2, {step}};
  }
};

TEST_F(KillPointTest, ASealKilledBetweenCutAndSyncIsDoneAgain) {
  const Bytes whole = Old();
  const Bytes torn = Concat(whole, Slice(whole, 0, 100));
  int number = 0;
  for (const StopPoint& point : kSealPoints) {
    SCOPED_TRACE(Text(point));
    for (const char* way : {"resumePath", "finalizePath", "start"}) {
      SCOPED_TRACE(way);
      const Take take =
          Stereo("seal" + std::to_string(++number) + ".aac", "finalizePath");
      WriteFile(take.path, torn);
      Kill(take, point);
      const Bytes left = ReadFile(take.path);
      EXPECT_TRUE(left == (Text(point) == "before ftruncate" ? torn : whole));
      Recover(way, take, left, whole);
    }
  }
}

TEST_F(KillPointTest, AStartKilledAroundItsRenameKeepsTheOldAudio) {
  const Bytes old = Old();
  int number = 0;
  for (const StopPoint& point : kStartPoints) {
    SCOPED_TRACE(Text(point));
    const std::string name = "start" + std::to_string(++number);
    const Take take = Stereo(name + ".aac", "start");
    const std::string orphan = Path(name + ".orphan.aac");
    WriteFile(take.path, old);
    Kill(take, point);
    const bool moved = Exists(orphan);
    EXPECT_EQ(moved, Text(point) != "before rename");
    EXPECT_TRUE(ReadFile(moved ? orphan : take.path) == old);
    // An empty new file isn't worth a slot, and a moved one is not moved twice.
    RunTake({take.path, 44100, 2, {"start", "append=3000", "stop"}});
    EXPECT_TRUE(ReadFile(orphan) == old);
    EXPECT_FALSE(Exists(Path(name + ".orphan1.aac")));
  }
}

TEST_F(KillPointTest, ATakeKilledBehindItsRenameHasNothingToResume) {
  const Take take = Stereo("take.aac", "start");
  WriteFile(take.path, Old());
  Kill(take, {0, "rename", 1, true});
  EXPECT_EQ(Call("resumePath", CaptureArgs(take.path, 44100, 2)).code,
            "CAPTURE_MISSING");
  EXPECT_TRUE(ReadFile(Path("take.orphan.aac")) == Old());
}

TEST_F(KillPointTest, AWavRepairKilledAnywhereKeepsTheAudioAndIsDoneAgain) {
  const Bytes audio = Noise(5000, 2);
  const Bytes broken = Concat(Bytes(44, 0xAA), audio);
  for (const StopPoint& point : kWavPoints) {
    SCOPED_TRACE(Text(point));
    const Take take = Stereo("take.wav", "finalizeWavOnly");
    WriteFile(take.path, broken);
    Kill(take, point);
    const Bytes left = ReadFile(take.path);
    EXPECT_TRUE(Slice(left, 44) == audio);
    RunTake(take);
    const Bytes repaired = ReadFile(take.path);
    EXPECT_TRUE(Slice(left, 0, 44) == Bytes(44, 0xAA) || left == repaired);
    EXPECT_TRUE(Slice(repaired, 44) == audio);
    EXPECT_TRUE(WavData(take.path) == audio);
  }
}

}  // namespace
}  // namespace corvane_test
