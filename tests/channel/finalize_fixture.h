// Captures to seal by their path, for tests of "finalizePath".
#ifndef CORVANE_TESTS_CHANNEL_FINALIZE_FIXTURE_H_
#define CORVANE_TESTS_CHANNEL_FINALIZE_FIXTURE_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {

// Starts the log lines of its seal.
constexpr char kFinalizeLabel[] = "finalizePath";

class FinalizePathTest : public ChannelTest {
 protected:
  // A finished capture of 4 frames at path_, the application's next run, and
  // no capture open.
  void LeftBehind() {
    Record(path_, Noise(3 * 1024));
    whole_ = ReadFile(path_);
    Restart();
    TakeTranscript();
  }

  // Begins a capture of 4 frames when it is drained; 77 bytes came while it
  // was paused.
  void Recording(const std::string& path) {
    Start(path);
    Pause();
    Append(Bytes(77));
    Resume();
    Append(Noise(3 * 1024));
    TakeTranscript();
  }

  // With the capture's own name as output, spelled the same way.
  void ExpectFinalized(const std::string& path, const Reply& figures,
                       const std::vector<std::string>& repairs = {},
                       int64_t skipped = 0) {
    FinalizePath(path);
    std::vector<std::string> expected = {
        SealStartLine(path, 0, kFinalizeLabel)};
    expected.insert(expected.end(), repairs.begin(), repairs.end());
    expected.push_back(SealEndLine(figures, skipped, kFinalizeLabel));
    expected.push_back(Answer("finalizePath", figures));
    EXPECT_EQ(TakeTranscript(), expected);
  }

  void ExpectNotFinalized(const std::string& path, const Reply& error,
                          const std::vector<std::string>& repairs = {}) {
    FinalizePath(path);
    std::vector<std::string> expected = {
        SealStartLine(path, 0, kFinalizeLabel)};
    expected.insert(expected.end(), repairs.begin(), repairs.end());
    expected.push_back(Failed("finalizePath", error));
    expected.push_back(Answer("finalizePath", error));
    EXPECT_EQ(TakeTranscript(), expected);
  }

  Reply NoFrameIn(int64_t bytes) const {
    return FileError("VERIFY_FAILED",
                     "capture holds no complete AAC frame (" +
                         std::to_string(bytes) + " bytes)",
                     path_);
  }

  Reply FourFrames(size_t bytes) const {
    return Figures(path_, FramesToMs(4, 48000), static_cast<int64_t>(bytes));
  }

  const std::string path_ = Path("take.aac");
  Bytes whole_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CHANNEL_FINALIZE_FIXTURE_H_
