// "finalizeWavOnly": a WAV file's header written anew, its audio left alone.
#include <errno.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "wav_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

// Each field keeps what it has room for, nothing is checked.
TEST_F(FinalizeWavOnlyTest, AWrongArgumentOverwritesARightHeader) {
  WriteFile(path_, Unfinished(10));
  ExpectRepaired(10, 48000, 2);
  ExpectRepaired(10, 8000, 1);
  EXPECT_EQ(HeaderNow(), WavHeaderOf({46, 1, 8000, 16000, 2, 10}));
}

TEST_F(FinalizeWavOnlyTest, RepairingAgainChangesNothing) {
  WriteFile(path_, Unfinished(501));
  ExpectRepaired(501);
  const Bytes repaired = ReadFile(path_);
  ExpectRepaired(501);
  EXPECT_EQ(ReadFile(path_), repaired);
}

TEST_F(FinalizeWavOnlyTest, ARealFileIsWhatItWasBeforeItsHeaderWasLost) {
  const Bytes original = ReadFile("/usr/share/sounds/alsa/Front_Center.wav");
  Bytes damaged = original;
  std::fill_n(damaged.begin(), kWavHeaderSize, 0);
  WriteFile(path_, damaged);
  ExpectRepaired(original.size() - kWavHeaderSize, 48000, 1);
  EXPECT_TRUE(ReadFile(path_) == original);
}

TEST_F(FinalizeWavOnlyTest, ABitRateIsNotLookedAt) {
  WriteFile(path_, Unfinished(10));
  for (const Value& any : {Value(0), Value::Null(), Value("fast")}) {
    EXPECT_EQ(
        Call("finalizeWavOnly", WavArgs(path_, 48000, 2).With("bitRate", any)),
        NullReply());
  }
}

// It trusts its caller: whatever the path names loses its first 44 bytes.
TEST_F(FinalizeWavOnlyTest, AnyFileIsTakenForAWavFile) {
  Record(path_, Noise(3 * 1024));
  const Bytes capture = ReadFile(path_);
  const auto data = static_cast<uint32_t>(capture.size() - kWavHeaderSize);
  ExpectRepaired(data);
  EXPECT_EQ(ReadFile(path_),
            Concat(WavHeaderOf({data + 36, 2, 48000, 192000, 4, data}),
                   Slice(capture, kWavHeaderSize)));
}

TEST_F(FinalizeWavOnlyTest, TheOpenCaptureIsNotConcerned) {
  const std::string capture = Path("take.aac");
  WriteFile(path_, Unfinished(10));
  Start(capture);
  Append(Noise(2 * 1024));
  ExpectRepaired(10);
  EXPECT_EQ(Repair(Path("missing.wav")).code, "CAPTURE_MISSING");
  EXPECT_EQ(Append(Noise(1024)), NullReply());
  EXPECT_THAT(Stop(), Sealed(capture, 85));
}

TEST_F(FinalizeWavOnlyTest, ARelativePathIsTakenAsItStands) {
  const WorkingDir here(Path(""));
  WriteFile(path_, Unfinished(10));
  EXPECT_EQ(Repair("./take.wav"), NullReply());
  EXPECT_THAT(LogLines(), ElementsAre(PatchedLine("./take.wav", 10)));
  EXPECT_EQ(HeaderNow(), WavHeaderOf({46, 2, 48000, 192000, 4, 10}));
}

TEST_F(FinalizeWavOnlyTest, RunsInItsTurn) {
  const std::string capture = Path("take.aac");
  WriteFile(path_, Unfinished(10));
  Post("start", CaptureArgs(capture, 48000, 1));
  Post("finalizeWavOnly", WavArgs(path_, 48000, 1));
  Post("cancel");
  AwaitReplies();
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(StartLine(capture, 48000, 1),
                          Answer("start", NullReply()), PatchedLine(path_, 10),
                          Answer("finalizeWavOnly", NullReply()),
                          ClosedLine("cancel", capture, 0),
                          Answer("cancel", NullReply())));
}

Reply NotAvailable(const std::string& code, const std::string& path,
                   int errnum) {
  return ErrnoError(code, "WAV not available", path, errnum);
}

Reply NotPatched(const std::string& path, int errnum) {
  return ErrnoError("FINALIZE_FAILED", "Failed to patch WAV header", path,
                    errnum);
}

TEST_F(FinalizeWavOnlyTest, AMissingFileIsNotCreated) {
  ExpectNotRepaired(path_, NotAvailable("CAPTURE_MISSING", path_, ENOENT));
  EXPECT_THAT(ListDir(Path("")), ElementsAre());
}

TEST_F(FinalizeWavOnlyTest, APathThatLeadsNowhereIsNotCalledMissing) {
  WriteFile(path_, Unfinished(10));
  ExpectNotRepaired(path_ + "/x",
                    NotAvailable("FINALIZE_FAILED", path_ + "/x", ENOTDIR));
  const std::string endless = Path(std::string(300, 'x'));
  ExpectNotRepaired(endless,
                    NotAvailable("FINALIZE_FAILED", endless, ENAMETOOLONG));
}

TEST_F(FinalizeWavOnlyTest, AFolderCannotBePatched) {
  ASSERT_EQ(mkdir(path_.c_str(), 0755), 0);
  ExpectNotRepaired(path_, NotPatched(path_, EISDIR));
}

TEST_F(FinalizeWavOnlyTest, AFullDiskIsReported) {
  ASSERT_EQ(symlink("/dev/full", path_.c_str()), 0);
  ExpectNotRepaired(path_, NotPatched(path_, ENOSPC));
}

TEST_F(FinalizeWavOnlyTest, AFileThatCannotBeSyncedIsReported) {
  ASSERT_EQ(symlink("/dev/null", path_.c_str()), 0);
  ExpectNotRepaired(path_, NotPatched(path_, EINVAL));
}

// Files of more than 4 GiB, nearly all of it a hole.
}  // namespace
}  // namespace corvane_test
