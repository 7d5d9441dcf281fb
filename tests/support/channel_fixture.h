// The plugin behind its two channels, driven the way an application drives it:
// calls go in as encoded messages, replies and log lines come back through the
// main context. Each test has an engine and a folder of its own.
#ifndef CORVANE_TESTS_SUPPORT_CHANNEL_FIXTURE_H_
#define CORVANE_TESTS_SUPPORT_CHANNEL_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "engine/engine.h"
#include "support/bytes.h"
#include "support/files.h"
#include "support/glib_log.h"
#include "support/reply.h"
#include "support/value.h"

namespace corvane_test {

// The arguments of "start" and of the other methods that take a format.
Value CaptureArgs(const std::string& path, int64_t rate, int64_t channels);

// Lines of a transcript: what a log event and what a reply look like there.
std::string Info(const std::string& message);
std::string Warning(const std::string& message);
std::string Error(const std::string& message);
std::string Answer(const std::string& method, const Reply& reply);
// An error reply and the line that the worker logs before it.
std::string Failed(const std::string& method, const Reply& error);

// The lines that the encoder and the session log on their way.
std::string StartLine(const std::string& path, int rate, int channels,
                      int64_t bit_rate = 64000);
std::string EncoderLine(int rate, int channels, int64_t bit_rate = 64000);
std::string ClosedLine(const std::string& reason, const std::string& path,
                       size_t frames);
std::string ResumeLine(const std::string& path, size_t bytes,
                       int64_t duration_ms);
// `label` names the method that seals.
std::string SealStartLine(const std::string& path, uint64_t dropped = 0,
                          const std::string& label = "stop");
std::string SealEndLine(const Reply& figures, int64_t skipped = 0,
                        const std::string& label = "stop");
// What a repair says of a torn tail and of foreign bytes between frames.
std::string DroppingLine(size_t bytes, const std::string& path);
std::string ForeignLine(const std::string& path, size_t bytes);

// Matches the figures of a capture sealed at `path`: its duration in whole
// milliseconds and, asked when the reply is there, the size of the file.
testing::Matcher<Reply> Sealed(const std::string& path, int64_t duration_ms,
                               int64_t dropped_append_bytes = 0);

class ChannelTest : public testing::Test {
 protected:
  // An engine that listens to the log already.
  ChannelTest();
  ~ChannelTest() override;
  // Fails the test when GLib logged anything but lines of the plugin: a
  // critical of the embedding, for one.
  void TearDown() override;

  std::string Path(const std::string& name) const { return dir_.Path(name); }

  // One call, and the main context runs until it is answered.
  Reply Call(const char* method, const Value& args = Value());
  Reply Start(const std::string& path, int64_t rate = 48000,
              int64_t channels = 1);
  Reply ResumePath(const std::string& path, int64_t rate = 48000,
                   int64_t channels = 1);
  // With the capture as its own output, as it must be.
  Reply FinalizePath(const std::string& path);
  Reply Append(const Bytes& pcm);
  Reply Pause();
  Reply Resume();
  Reply Stop();
  Reply Cancel();
  Reply Flush();
  // A whole take: start, the PCM in chunks of `chunk` bytes, stop.
  Reply Record(const std::string& path, const Bytes& pcm, int64_t rate = 48000,
               int64_t channels = 1, size_t chunk = 4096);

  // Calls without waiting; AwaitReplies() runs the main context until every
  // call so far is answered.
  void Post(const char* method, const Value& args = Value());
  void AwaitReplies();
  // Runs what the main context has ready and returns.
  void DispatchPending();

  void ListenToLog();
  void CancelLog();
  // Takes the plugin down and delivers what its worker left behind; Restart()
  // then registers a new one, which listens to the log as the first did.
  void Shutdown();
  void Restart();

  // Replies and log events in the order in which they arrived, and forgets
  // them; see the functions above for the form.
  std::vector<std::string> TakeTranscript();
  // The plugin's log events alone, out of the transcript so far.
  std::vector<std::string> LogLines() const;

  corvane::Engine& engine() { return *engine_; }
  GlibLogCapture& glib() { return glib_; }

 private:
  struct Entry {
    bool is_log;
    std::string text;
  };

  void Send(const char* method, const Value& args,
            std::function<void(const Reply&)> on_reply);

  TempDir dir_;
  GlibLogCapture glib_;
  std::unique_ptr<corvane::Engine> engine_;
  const std::thread::id main_thread_ = std::this_thread::get_id();
  std::vector<Entry> transcript_;
  size_t unanswered_ = 0;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_CHANNEL_FIXTURE_H_
