#include "crash/walker.h"

#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <sstream>

#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

[[noreturn]] void Die() {
  kill(getpid(), SIGKILL);
  for (;;) pause();
}

}  // namespace

Walker::Walker(const Walk& walk, int socket)
    : walk_(walk),
      socket_(socket),
      held_at_first_(HeldNow()),
      // Made before any fault that kills, so that it runs before it.
      tap_(On("write").MayMiss().After([this](PluginCall& call) {
        if (call.result > 0) Say(kWrittenPacket, call.data, call.result);
      })) {
  g_log_set_default_handler(
      [](const gchar*, GLogLevelFlags level, const gchar* text, gpointer self) {
        static_cast<Walker*>(self)->HearGlib(level, text);
      },
      this);
  StartEngine();
}

void Walker::Run() {
  size_t i = 0;
  while (recv(socket_, &i, sizeof(i), 0) == sizeof(i)) {
    Do(i);
    Say(kDonePacket, "", 0);
  }
  _exit(0);
}

void Walker::Do(size_t i) {
  const Step& step = walk_[i];
  if (step.what == Do::kKill) DieIn(i);
  if (step.what == Do::kRestart) return Restart();
  Post(step);
  AwaitReplies();
}

void Walker::Post(const Step& step) {
  ++unanswered_;
  const char* const method = MethodOf(step);
  engine_->Invoke(method, ArgsOf(step).get(),
                  [this, method](FlMethodResponse* response) {
                    SayLine(Answer(method, ReadReply(response)));
                    --unanswered_;
                  });
}

void Walker::AwaitReplies() {
  engine_->IterateUntil([this] { return unanswered_ == 0; });
}

void Walker::StartEngine() {
  engine_ = std::make_unique<corvane::Engine>();
  engine_->ListenToLog(
      [this](const std::string& level, const std::string& message) {
        SayLine(level + ": " + message);
      });
}

// The plugin's lines come over the channel as well, but for those of its end.
// Any other line is one too many.
void Walker::HearGlib(GLogLevelFlags level, const std::string& line) const {
  const std::string tag = "[Corvane] ";
  if (line.rfind(tag, 0) != 0) return SayLine("GLib: " + line);
  if (!is_ending_) return;
  SayLine((level == G_LOG_LEVEL_MESSAGE ? "info: " : "warning: ") +
          line.substr(tag.size()));
}

void Walker::Restart() {
  is_ending_ = true;
  engine_.reset();
  is_ending_ = false;
  const Held held = HeldNow();
  if (!(held == held_at_first_)) {
    std::ostringstream text;
    text << "still held: " << held << ", at first " << held_at_first_;
    SayLine(text.str());
  }
  StartEngine();
}

Rule Walker::DeathIn(const Step& kill) const {
  const auto die = [](PluginCall&) { Die(); };
  if (kill.bytes > 0) {
    return On("write").Nth(kill.count).MayMiss().Accept(kill.bytes).After(die);
  }
  // The worker's calls alone come in the same order each time.
  return OnEverything().MayMiss().Before(
      [left = std::make_shared<int>(kill.count),
       main = gettid()](const PluginCall& call) {
        if (call.thread != main && --*left == 0) Die();
      });
}

void Walker::DieIn(size_t kill) {
  const Step& step = walk_[kill];
  if (step.count == 0) Die();
  const Fault death(DeathIn(step));
  for (const Step& call : CallsBehind(walk_, kill)) Post(call);
  AwaitReplies();
  Die();
}

// A packet is sent whole or not at all, from either thread.
void Walker::Say(char kind, const void* data, size_t size) const {
  const auto* bytes = static_cast<const char*>(data);
  std::string packet(1, kind);
  packet.append(bytes, size);
  if (send(socket_, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) _exit(1);
}

void Walker::SayLine(const std::string& line) const {
  Say(kLinePacket, line.data(), line.size());
}

}  // namespace corvane_test
