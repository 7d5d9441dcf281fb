// The plugin on its channels, with its system and codec calls at the tests'
// mercy. Takes are mono at 48000 Hz unless a test says otherwise, so that a
// frame is 1024 samples of 2 bytes.
#ifndef CORVANE_TESTS_FAULTS_FAULTS_FIXTURE_H_
#define CORVANE_TESTS_FAULTS_FAULTS_FIXTURE_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <string>
#include <utility>
#include <vector>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/codec_faults.h"
#include "support/faults.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {

using Lines = std::vector<std::string>;

constexpr int kFrameSamples = 1024;

// What the plugin holds while a capture is open, without and with its codec.
inline Held HeldWithoutCodec() { return {1, 0, 0, 0}; }
inline Held HeldWithCodec() { return {1, 1, 1, 1}; }

// A failed libav call, in libav's own words.
inline Reply LibavError(const std::string& what, const std::string& path,
                        int averror) {
  char text[128] = "";
  av_strerror(averror, text, sizeof text);
  return FfmpegError(what, text, path, averror);
}

// A line of the transcript: the codec failed, and another one takes over.
inline std::string Restarting(const Reply& error) {
  return Warning("AAC codec failed mid-capture (" + error.message +
                 "); restarting it");
}

// The names of the calls so far. How often a scan reads is its own business:
// calls in a row to one function count as one.
inline Lines Steps(const CallLog& log) {
  Lines names = log.Names();
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

// Stops the worker at the next call that `rule` matches, until the gate is
// opened or gone.
class Gate {
 public:
  explicit Gate(Rule rule)
      : fault_(rule.Nth(1).Before(
            [this, opened = opened_.get_future().share()](PluginCall&) {
              reached_.set_value();
              opened.wait();
            })) {}
  ~Gate() { Open(); }

  // Until the worker has come as far as that. The main context doesn't run
  // meanwhile: what the worker has to say stays under way.
  void AwaitWorker() {
    EXPECT_EQ(reached_.get_future().wait_for(std::chrono::seconds(20)),
              std::future_status::ready)
        << "the worker doesn't come";
  }

  void Open() {
    if (!std::exchange(open_, true)) opened_.set_value();
  }

 private:
  std::promise<void> reached_;
  std::promise<void> opened_;
  bool open_ = false;
  Fault fault_;
};

class FaultsTest : public ChannelTest {
 protected:
  // What libav has to say about its faults is no news here.
  FaultsTest() { av_log_set_level(AV_LOG_QUIET); }

  // Whatever failed on the way, nothing may be left behind.
  void TearDown() override {
    Shutdown();
    EXPECT_EQ(HeldNow(), Held());
    ChannelTest::TearDown();
  }

  // A capture that waits for its first append; returns its path.
  std::string Begin(const std::string& name = "take.aac", int channels = 1) {
    std::string path = Path(name);
    EXPECT_EQ(Start(path, 48000, channels), NullReply());
    TakeTranscript();
    return path;
  }

  // The file that a take of `pcm` gives when nothing fails.
  Bytes Undisturbed(const Bytes& pcm, int channels = 1) {
    const std::string path = Path("undisturbed.aac");
    Start(path, 48000, channels);
    EXPECT_EQ(Append(pcm), NullReply());
    EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);
    TakeTranscript();
    Bytes file = ReadFile(path);
    EXPECT_EQ(unlink(path.c_str()), 0);
    return file;
  }

  // The same, as the plugin's frames.
  std::vector<Bytes> UndisturbedFrames(const Bytes& pcm) {
    return SplitFrames(Undisturbed(pcm));
  }
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_FAULTS_FIXTURE_H_
