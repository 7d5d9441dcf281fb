#include "stress/life.h"

#include <gtest/gtest.h>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/faults.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr int kMostAppended = 2000;  // sample frames

void DispatchPending() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
}

}  // namespace

struct Life::Choice {
  int weight;
  void (Life::*act)();
};

// Weights out of a hundred: appends often enough that takes grow.
const Life::Choice Life::kChoices[] = {
    {12, &Life::Start},        {32, &Life::Append},
    {5, &Life::Pause},         {6, &Life::Resume},
    {6, &Life::Stop},          {3, &Life::Cancel},
    {4, &Life::Flush},         {5, &Life::ResumePath},
    {5, &Life::FinalizePath},  {3, &Life::BadCall},
    {3, &Life::UnknownMethod}, {6, &Life::Listen},
    {4, &Life::StopListening}, {4, &Life::Dispatch},
    {2, &Life::AwaitSome},
};

Life::Life(Chance* chance) : chance_(chance) {}

void Life::Act() {
  const Choice* choice = kChoices;
  for (int left = chance_->Between(1, 100); left > choice->weight; ++choice) {
    left -= choice->weight;
  }
  (this->*choice->act)();
}

void Life::Start() {
  const std::string path = dir_.Path(std::to_string(takes_++) + ".aac");
  Call("start", CaptureArgs(path, kStressRate, 1), expected_.Start(path));
}

void Life::Append() {
  static const Bytes pcm = Sine(kMostAppended);
  const size_t bytes = 2 * chance_->Between(0, kMostAppended);
  Call("append", Slice(pcm, 0, bytes), expected_.Append(bytes));
}

void Life::Pause() { Call("pause", Value(), expected_.Pause()); }
void Life::Resume() { Call("resume", Value(), expected_.Resume()); }
void Life::Stop() { Call("stop", Value(), expected_.Stop()); }
void Life::Cancel() { Call("cancel", Value(), expected_.Cancel()); }
void Life::Flush() { Call("flush", Value(), NullReply()); }

void Life::ResumePath() {
  const std::string path = SomePath();
  Call("resumePath", CaptureArgs(path, kStressRate, 1),
       expected_.ResumePath(path));
}

void Life::FinalizePath() {
  const std::string path = SomePath();
  Call("finalizePath",
       CaptureArgs(path, kStressRate, 1).With("outputPath", path),
       expected_.FinalizePath(path));
}

void Life::BadCall() {
  Call("append", Value::Null(), InvalidArgs("append requires Uint8List"));
}

// The one answer that waits for nobody.
void Life::UnknownMethod() {
  int answers = 0;
  engine_.Invoke("explode", nullptr, [&](FlMethodResponse* response) {
    EXPECT_EQ(ReadReply(response), NotImplemented());
    ++answers;
  });
  EXPECT_EQ(answers, 1);
}

void Life::Listen() {
  listening_ = true;
  engine_.ListenToLog([this](const std::string&, const std::string& message) {
    OnLogLine(message);
  });
}

void Life::StopListening() {
  engine_.CancelLog();
  listening_ = false;
}

void Life::Dispatch() { DispatchPending(); }

void Life::AwaitSome() {
  if (due_.empty()) return;
  const int last = static_cast<int>(due_.size()) - 1;
  const size_t left = chance_->Between(0, last);
  engine_.IterateUntil([&] { return due_.size() <= left; });
}

void Life::Call(const char* method, const Value& args, const Reply& due) {
  due_.push_back({method, due});
  engine_.Invoke(method, args.get(),
                 [this, method](FlMethodResponse* response) {
                   OnReply(method, ReadReply(response));
                 });
}

void Life::OnReply(const std::string& method, const Reply& reply) {
  CheckThread("answer to " + method);
  EXPECT_FALSE(ended_) << "answered after the end: " << method;
  ASSERT_FALSE(due_.empty()) << "answered once more: " << method;
  Reply comparable = reply;
  comparable.bytes = 0;
  EXPECT_EQ(Answer(method, comparable),
            Answer(due_.front().method, due_.front().reply));
  due_.pop_front();
}

void Life::OnLogLine(const std::string& message) {
  CheckThread("log line " + message);
  EXPECT_TRUE(listening_) << "nobody listens: " << message;
  EXPECT_FALSE(ended_) << "logged after the end: " << message;
}

void Life::CheckThread(const std::string& what) {
  EXPECT_EQ(std::this_thread::get_id(), main_thread_)
      << "not on the main thread: " << what;
}

std::string Life::SomePath() {
  return dir_.Path(std::to_string(chance_->Between(0, takes_)) + ".aac");
}

void Life::EndBy(End end) {
  if (end == End::kIdle) {
    engine_.IterateUntil([this] { return due_.empty(); });
  } else if (end == End::kDispose) {
    g_object_run_dispose(plugins_.last());
  } else if (end == End::kReplace) {
    ReplaceMethodChannel();
  }
  if (end != End::kShutdown) {
    // By now the worker has posted all that it ever will.
    DispatchPending();
    EXPECT_EQ(due_.size(), 0u)
        << "unanswered, " << due_.front().method << " the first of them";
  }
  engine_.Shutdown();
  ended_ = true;
  DispatchPending();
  CheckLeftovers();
  CheckFiles();
}

void Life::ReplaceMethodChannel() {
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
  g_autoptr(FlMethodChannel) other = fl_method_channel_new(
      engine_.messenger(), "com.velka.corvane", FL_METHOD_CODEC(codec));
  EXPECT_TRUE(FL_IS_METHOD_CHANNEL(other));
  EXPECT_EQ(plugins_.alive(), 0u);
}

void Life::CheckLeftovers() {
  EXPECT_EQ(plugins_.made(), 1);
  EXPECT_EQ(plugins_.alive(), 0u) << "plugins";
  EXPECT_EQ(calls_.alive(), 0u) << "method calls";
  EXPECT_EQ(channels_.alive(), 0u) << "event channels";
  EXPECT_EQ(HeldNow(), Held());
  EXPECT_FALSE(g_main_context_pending(nullptr));
}

// Whole frames and nothing else, as many as the calls were worth.
void Life::CheckFiles() {
  expected_.Close();
  EXPECT_EQ(ListDir(dir_.path()).size(), expected_.frames().size());
  for (const auto& [path, frames] : expected_.frames()) {
    EXPECT_EQ(SplitFrames(ReadFile(path)).size(), frames) << path;
  }
}

}  // namespace corvane_test
