#include "support/channel_fixture.h"

#include <utility>

#include "support/pcm.h"

namespace corvane_test {

Value CaptureArgs(const std::string& path, int64_t rate, int64_t channels) {
  return Value::Map(
      {{"capturePath", path}, {"sampleRate", rate}, {"channels", channels}});
}

std::string Info(const std::string& message) { return "info: " + message; }

std::string Warning(const std::string& message) {
  return "warning: " + message;
}

std::string Error(const std::string& message) { return "error: " + message; }

std::string Answer(const std::string& method, const Reply& reply) {
  return method + " -> " + ToString(reply);
}

std::string Failed(const std::string& method, const Reply& error) {
  return Error(method + " failed: " + error.code + " " + error.message);
}

std::string StartLine(const std::string& path, int rate, int channels,
                      int64_t bit_rate) {
  return Info("start capture=" + path + " rate=" + std::to_string(rate) +
              " channels=" + std::to_string(channels) +
              " bitRate=" + std::to_string(bit_rate));
}

std::string EncoderLine(int rate, int channels, int64_t bit_rate) {
  return Info("AAC encoder aac started rate=" + std::to_string(rate) +
              " channels=" + std::to_string(channels) +
              " bitRate=" + std::to_string(bit_rate));
}

std::string ClosedLine(const std::string& reason, const std::string& path,
                       size_t frames) {
  return Info("closed capture on " + reason + ": " + path +
              " frames=" + std::to_string(frames));
}

std::string ResumeLine(const std::string& path, size_t bytes,
                       int64_t duration_ms) {
  return Info("resumePath capture=" + path + " bytes=" + std::to_string(bytes) +
              " durationMs=" + std::to_string(duration_ms));
}

std::string SealStartLine(const std::string& path, uint64_t dropped,
                          const std::string& label) {
  return Info(label + " start capture=" + path +
              " droppedAppendBytes=" + std::to_string(dropped));
}

std::string SealEndLine(const Reply& figures, int64_t skipped,
                        const std::string& label) {
  return Info(
      label + " end capture=" + figures.path +
      " bytes=" + std::to_string(figures.bytes) +
      " durationMs=" + std::to_string(figures.duration_ms) +
      " skippedBytes=" + std::to_string(skipped) +
      " droppedAppendBytes=" + std::to_string(figures.dropped_append_bytes));
}

std::string DroppingLine(size_t bytes, const std::string& path) {
  return Warning("dropping " + std::to_string(bytes) +
                 " torn trailing bytes from " + path);
}

std::string ForeignLine(const std::string& path, size_t bytes) {
  return Warning(path + " has " + std::to_string(bytes) +
                 " non-ADTS bytes between frames; left in place");
}

MATCHER_P3(IsSealed, path, duration_ms, dropped, "") {
  const Reply expected = Figures(path, duration_ms, FileSize(path), dropped);
  *result_listener << "which should be " << expected;
  return arg == expected;
}

testing::Matcher<Reply> Sealed(const std::string& path, int64_t duration_ms,
                               int64_t dropped_append_bytes) {
  return IsSealed(path, duration_ms, dropped_append_bytes);
}

ChannelTest::ChannelTest() : engine_(std::make_unique<corvane::Engine>()) {
  ListenToLog();
}

ChannelTest::~ChannelTest() { Shutdown(); }

void ChannelTest::TearDown() {
  for (const GlibLine& line : glib_.Lines()) {
    EXPECT_TRUE(!line.domain && line.message.rfind("[Corvane] ", 0) == 0)
        << "not a line of the plugin: " << line;
  }
}

Reply ChannelTest::Call(const char* method, const Value& args) {
  bool answered = false;
  Reply reply;
  Send(method, args, [&](const Reply& got) {
    reply = got;
    answered = true;
  });
  engine_->IterateUntil([&] { return answered; });
  return reply;
}

Reply ChannelTest::Start(const std::string& path, int64_t rate,
                         int64_t channels) {
  return Call("start", CaptureArgs(path, rate, channels));
}

Reply ChannelTest::ResumePath(const std::string& path, int64_t rate,
                              int64_t channels) {
  return Call("resumePath", CaptureArgs(path, rate, channels));
}

Reply ChannelTest::FinalizePath(const std::string& path) {
  return Call("finalizePath",
              CaptureArgs(path, 48000, 1).With("outputPath", path));
}

Reply ChannelTest::Append(const Bytes& pcm) { return Call("append", pcm); }
Reply ChannelTest::Pause() { return Call("pause"); }
Reply ChannelTest::Resume() { return Call("resume"); }
Reply ChannelTest::Stop() { return Call("stop"); }
Reply ChannelTest::Cancel() { return Call("cancel"); }
Reply ChannelTest::Flush() { return Call("flush"); }

Reply ChannelTest::Record(const std::string& path, const Bytes& pcm,
                          int64_t rate, int64_t channels, size_t chunk) {
  Post("start", CaptureArgs(path, rate, channels));
  for (const Bytes& piece : Chunks(pcm, chunk)) Post("append", piece);
  return Stop();
}

void ChannelTest::Post(const char* method, const Value& args) {
  ++unanswered_;
  Send(method, args, [this](const Reply&) { --unanswered_; });
}

void ChannelTest::Send(const char* method, const Value& args,
                       std::function<void(const Reply&)> on_reply) {
  engine_->Invoke(method, args.get(),
                  [this, method = std::string(method),
                   on_reply = std::move(on_reply)](FlMethodResponse* response) {
                    EXPECT_EQ(std::this_thread::get_id(), main_thread_)
                        << "answered off the main thread: " << method;
                    const Reply reply = ReadReply(response);
                    transcript_.push_back({false, Answer(method, reply)});
                    on_reply(reply);
                  });
}

void ChannelTest::AwaitReplies() {
  engine_->IterateUntil([this] { return unanswered_ == 0; });
}

void ChannelTest::DispatchPending() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

void ChannelTest::ListenToLog() {
  engine_->ListenToLog(
      [this](const std::string& level, const std::string& message) {
        EXPECT_EQ(std::this_thread::get_id(), main_thread_)
            << "logged off the main thread: " << message;
        transcript_.push_back({true, level + ": " + message});
      });
}

void ChannelTest::CancelLog() { engine_->CancelLog(); }

void ChannelTest::Shutdown() {
  if (engine_ == nullptr) return;
  engine_->Shutdown();
  DispatchPending();
  engine_.reset();
}

void ChannelTest::Restart() {
  Shutdown();
  unanswered_ = 0;
  engine_ = std::make_unique<corvane::Engine>();
  ListenToLog();
}

std::vector<std::string> ChannelTest::TakeTranscript() {
  std::vector<std::string> lines;
  for (Entry& entry : std::exchange(transcript_, {})) {
    lines.push_back(std::move(entry.text));
  }
  return lines;
}

std::vector<std::string> ChannelTest::LogLines() const {
  std::vector<std::string> lines;
  for (const Entry& entry : transcript_) {
    if (entry.is_log) lines.push_back(entry.text);
  }
  return lines;
}

}  // namespace corvane_test
