// What the `corvane` program tells its user when the system fails under it.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <thread>

#include "audio/audio_source.h"
#include "host/child_process.h"
#include "real/real_fixture.h"
#include "terminal/way_out.h"

namespace corvane_test {
namespace {

constexpr char kNoSpace[] =
    ": Failed to append AAC frame: No space left on device";
constexpr char kFreeSome[] = "free some space, or record to another disk";

class RealProgramTest : public DiskTest {
 protected:
  // Runs `corvane METHOD PATH` on the raw PCM of a file.
  ChildResult Corvane(const std::string& method, const std::string& path) {
    WriteFile(Path("in.pcm"), Noise(120 * kFrameSamples));
    return Child({"/bin/sh", "-c", "exec \"$@\" <\"$0\"", Path("in.pcm"),
                  CORVANE_PROGRAM, method, path, "-i", "-", "-r", "48000", "-c",
                  "1"},
                 ChildSetup())
        .Wait();
  }

  static void ExpectSaid(const ChildResult& run, const std::string& sentence) {
    EXPECT_NE(run.err.find("corvane: " + sentence), std::string::npos)
        << "expected: " << sentence << "\nactual:\n"
        << run.err;
  }

  // A take that begins, for the time being, well.
  std::unique_ptr<Child> Recording(const std::string& path) {
    ChildSetup setup;
    setup.input_is_pipe = true;
    auto child = std::make_unique<Child>(
        std::vector<std::string>{CORVANE_PROGRAM, "record", path, "-i", "-",
                                 "-r", "48000", "-c", "1"},
        setup);
    child->Write(Noise(4 * kFrameSamples));
    child->AwaitError("AAC encoder aac started");
    return child;
  }

  // One whose first second is in the file, but for what the encoder holds, on a
  // disk without any more room.
  std::unique_ptr<Child> RecordingOnAFullDisk() {
    // The encoder holds two frames, and the part of one that is being filled.
    recorded_ = Join(FramesOf({Noise(48000)}), 0, 48000 / kFrameSamples - 2);
    ChildSetup setup;
    setup.input_is_pipe = true;
    setup.terminal_columns = 80;
    setup.environment["HOME"] = Path("home");
    setup.environment["TERM"] = "xterm";  // for the line that is waited for
    auto child = std::make_unique<Child>(
        std::vector<std::string>{CORVANE_PROGRAM, "record", path_, "-i", "-",
                                 "-r", "48000", "-c", "1"},
        setup);
    child->Write(Noise(48000));
    child->AwaitError("0:01");
    while (FileSize(path_) < static_cast<int64_t>(recorded_.size())) {
      std::this_thread::yield();
    }
    disk().Fill("filler");
    return child;
  }

  const std::string path_ = Path("disk/take.aac");
  Bytes recorded_;  // by the time that the disk was full
};

TEST_F(RealProgramTest, AFullDiskEndsTheTakeWithAWayOutThatWorks) {
  disk().Fill("filler", SmallDisk::kSize / 2);
  const ChildResult run = Corvane("record", path_);
  EXPECT_EQ(run.status, 1);
  ExpectSaid(run, path_ + kNoSpace);
  ExpectSaid(run, std::string(kFreeSome) +
                      "; then continue it with: corvane resume '" + path_ +
                      "' -i -");
  const Bytes fit = ReadFile(path_);
  const int64_t ms = FramesToMs(SplitFrames(fit).size(), kRate);
  ExpectSaid(run, path_ + ": the capture is whole up to 0:0" +
                      std::to_string(ms / 1000) + "." +
                      std::to_string(ms / 100 % 10) + " and sealed");
  ASSERT_EQ(unlink(OnDisk("filler").c_str()), 0);
  ExpectRecovered(path_, fit);
}

// Nothing must sound as if there were something to go back to.
TEST_F(RealProgramTest, ADiskWithoutAnyRoomLeavesATakeWithoutAudio) {
  disk().Fill("filler");
  const ChildResult run = Corvane("record", path_);
  EXPECT_EQ(run.status, 1);
  ExpectSaid(run, path_ + kNoSpace + "; " + kFreeSome);
  ExpectSaid(run, path_ + " holds no audio: not one frame could be written");
  EXPECT_EQ(run.err.find("keeps what was recorded"), std::string::npos);
  EXPECT_EQ(run.out, "");
}

// Beside the removed take there is no room for a copy of it.
TEST_F(RealProgramTest, ARemovedTakeOnAFullDiskIsSavedInTheHomeFolder) {
  ASSERT_EQ(mkdir(Path("home").c_str(), 0755), 0);
  const auto child = RecordingOnAFullDisk();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  child->CloseInput();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 1);
  const std::string saved = Path("home/take.rescued.aac");
  ExpectSaid(run, path_ +
                      ": it was removed while it was written; what was "
                      "recorded is saved in " +
                      saved);
  EXPECT_EQ(Slice(ReadFile(saved), 0, recorded_.size()), recorded_);
  EXPECT_FALSE(Exists(OnDisk("take.rescued.aac")));
}

TEST_F(RealProgramTest, ARemovedTakeThatFitsNowhereIsSaidToBeLost) {
  const auto child = RecordingOnAFullDisk();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  child->CloseInput();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 1);
  ExpectSaid(run,
             path_ +
                 ": it was removed while it was written, and what was "
                 "recorded could not be saved: " +
                 OnDisk("take.rescued.aac") + ": No space left on device, " +
                 Path("home/take.rescued.aac") + ": No such file or directory");
  EXPECT_EQ(run.out, "");
}

TEST_F(RealProgramTest, AReadOnlyDiskIsNamed) {
  ASSERT_EQ(disk().Remount(true), 0);
  const ChildResult run = Corvane("record", path_);
  EXPECT_EQ(run.status, 1);
  ExpectSaid(run, path_ +
                      ": Failed to create capture file: Read-only file "
                      "system; name a file in a folder that you may write to");
}

TEST_F(RealProgramTest, ALongNameComesWithTheAdviceToShortenIt) {
  const std::string path = Path(std::string(256, 'n'));
  const ChildResult run = Corvane("record", path);
  EXPECT_EQ(run.status, 1);
  ExpectSaid(run, path +
                      ": Failed to create capture file: File name too long; "
                      "give it a shorter name");
}

TEST_F(RealProgramTest, TooManyOpenFilesAreNotBlamedOnTheFolder) {
  const auto source = corvane::open_raw_input(STDIN_FILENO, {kRate, 1});
  for (const int errnum : {EMFILE, ENFILE}) {
    EXPECT_EQ(corvane::way_out({"WRITE_FAILED", "", "errno", errnum, path_},
                               path_, *source),
              "raise the limit on open files (ulimit -n)");
  }
}

}  // namespace
}  // namespace corvane_test
