// Captures that an earlier run left behind, for tests of "resumePath".
#ifndef CORVANE_TESTS_CHANNEL_RESUME_FIXTURE_H_
#define CORVANE_TESTS_CHANNEL_RESUME_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {

constexpr char kOverOpen[] = "resumePath over an open session";

class ResumePathTest : public ChannelTest {
 protected:
  // What a take of this PCM leaves in a file of its own: a new codec gives the
  // same frames again.
  Bytes FileOf(const Bytes& pcm, int rate = 48000, int channels = 1) {
    const std::string path = Path("reference.aac");
    if (Exists(path)) TruncateFile(path, 0);
    Record(path, pcm, rate, channels);
    Bytes file = ReadFile(path);
    TakeTranscript();
    return file;
  }

  // A new plugin, as in the application's next run, and an old file for it.
  void LeftBehind(const Bytes& content) {
    WriteFile(path_, content);
    Restart();
    TakeTranscript();
  }

  // A resume that succeeds: `repairs`, then the line that tells what is there.
  void ExpectResumed(const std::vector<std::string>& repairs, size_t bytes,
                     int64_t duration_ms) {
    ResumePath(path_);
    std::vector<std::string> expected = repairs;
    expected.push_back(ResumeLine(path_, bytes, duration_ms));
    expected.push_back(Answer("resumePath", NullReply()));
    EXPECT_EQ(TakeTranscript(), expected);
  }

  // A resume that fails, and leaves no capture open.
  void ExpectNotResumed(const std::string& path, const Reply& error,
                        const std::vector<std::string>& before = {}) {
    ResumePath(path);
    std::vector<std::string> expected = before;
    expected.push_back(Failed("resumePath", error));
    expected.push_back(Answer("resumePath", error));
    EXPECT_EQ(TakeTranscript(), expected);
    EXPECT_EQ(Stop(),
              PlainError("NOT_RECORDING", "stop with no open recording"));
    TakeTranscript();
  }

  // Appends to the resumed capture and closes it: the file is then `before`
  // and, right behind it, the frames of a new take.
  void ExpectFramesBehind(const Bytes& before) {
    EXPECT_EQ(Append(more_), NullReply());
    EXPECT_EQ(Cancel(), NullReply());
    EXPECT_EQ(ReadFile(path_), Concat(before, more_file_));
  }

  const Bytes more_ = Noise(2500, 1, 7);  // 4 frames with the priming
  const std::string path_ = Path("take.aac");
  const Bytes whole_ = FileOf(Noise(3 * 1024));  // 4 frames
  const std::vector<Bytes> frames_ = SplitFrames(whole_);
  const Bytes more_file_ = FileOf(more_);
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CHANNEL_RESUME_FIXTURE_H_
