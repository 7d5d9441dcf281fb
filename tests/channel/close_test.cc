// How a capture is closed, and what becomes of failures on the way.
#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

class CloseTest : public ChannelTest {
 protected:
  // Closes the plugin's descriptor of `path` behind its back.
  void CloseBehindItsBack(const std::string& path) {
    int closed = 0;
    for (const std::string& fd : ListDir("/proc/self/fd")) {
      std::error_code gone;
      const auto target =
          std::filesystem::read_symlink("/proc/self/fd/" + fd, gone);
      if (!gone && target == path) closed += close(std::stoi(fd)) == 0;
    }
    ASSERT_EQ(closed, 1) << "descriptors of " << path;
  }

  const std::string bad_descriptor_ = std::strerror(EBADF);
};

TEST_F(CloseTest, ACaptureHasOneDescriptor) {
  const std::vector<std::string> before = OpenDescriptors();
  Start(Path("take.aac"));
  Append(Noise(3000));
  EXPECT_EQ(OpenDescriptors().size(), before.size() + 1);
  Stop();
  EXPECT_EQ(OpenDescriptors(), before);
}

// An application that is started with its standard input closed gives the first
// file that it opens the lowest number there is.
TEST_F(CloseTest, DescriptorZeroIsOneLikeAnyOther) {
  const std::string path = Path("take.aac");
  const int standard_input = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3);
  ASSERT_GE(standard_input, 0);
  ASSERT_EQ(close(STDIN_FILENO), 0);
  Start(path);
  EXPECT_EQ(std::filesystem::read_symlink("/proc/self/fd/0"), path);
  EXPECT_EQ(Append(Noise(1024)), NullReply());
  EXPECT_THAT(Stop(), Sealed(path, FramesToMs(2, 48000)));
  EXPECT_FALSE(Exists("/proc/self/fd/0"));
  ASSERT_EQ(dup2(standard_input, STDIN_FILENO), STDIN_FILENO);
  ASSERT_EQ(close(standard_input), 0);
}

TEST_F(CloseTest, ALostDescriptorIsReportedByEveryStep) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  TakeTranscript();
  CloseBehindItsBack(path);
  Cancel();
  EXPECT_THAT(
      TakeTranscript(),
      ElementsAre(
          Warning("codec drain on cancel failed for " + path +
                  ": Failed to append AAC frame: " + bad_descriptor_),
          Warning("sync on cancel failed for " + path + ": " + bad_descriptor_),
          Warning("close on cancel failed for " + path + ": " +
                  bad_descriptor_),
          ClosedLine("cancel", path, 0), Answer("cancel", NullReply())));
}

TEST_F(CloseTest, WithoutAudioThereIsNothingToDrain) {
  const std::string path = Path("take.aac");
  Start(path);
  TakeTranscript();
  CloseBehindItsBack(path);
  Start(Path("next.aac"));
  const std::string on = " on start over an open session failed for " + path;
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Warning("sync" + on + ": " + bad_descriptor_),
                          Warning("close" + on + ": " + bad_descriptor_),
                          ClosedLine("start over an open session", path, 0),
                          StartLine(Path("next.aac"), 48000, 1),
                          Answer("start", NullReply())));
}

TEST_F(CloseTest, StopSealsWhatIsThereDespiteALostDescriptor) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(3 * 1024));
  TakeTranscript();
  CloseBehindItsBack(path);
  const Reply figures = Figures(path, 42, FileSize(path));
  EXPECT_EQ(Stop(), figures) << "the two frames written before";
  EXPECT_THAT(
      LogLines(),
      ElementsAre(
          Warning("codec drain on stop failed for " + path +
                  ": Failed to append AAC frame: " + bad_descriptor_),
          Warning("sync on stop failed for " + path + ": " + bad_descriptor_),
          Warning("close on stop failed for " + path + ": " + bad_descriptor_),
          ClosedLine("stop", path, 2), SealStartLine(path),
          SealEndLine(figures)));
}

TEST_F(CloseTest, DisposeReportsThemWithItsOwnReason) {
  const std::string path = Path("take.aac");
  Start(path);
  CloseBehindItsBack(path);
  glib().Take();
  Shutdown();
  const std::string on = " on plugin dispose failed for " + path + ": ";
  EXPECT_THAT(glib().Take(),
              ElementsAre(PluginWarning("sync" + on + bad_descriptor_),
                          PluginWarning("close" + on + bad_descriptor_),
                          PluginMessage("closed capture on plugin dispose: " +
                                        path + " frames=0")));
}

TEST_F(CloseTest, ClosingWhatIsClosedLogsNothing) {
  Record(Path("take.aac"), Noise(1024));
  TakeTranscript();
  Cancel();
  Start(Path("take2.aac"));
  EXPECT_THAT(TakeTranscript(),
              ElementsAre(Answer("cancel", NullReply()),
                          StartLine(Path("take2.aac"), 48000, 1),
                          Answer("start", NullReply())));
}

}  // namespace
}  // namespace corvane_test
