#include "crash/recorder.h"

#include <glib.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "crash/journal.h"
#include "engine/engine.h"
#include "support/faults.h"

namespace corvane_test {
namespace {

void Say(const char* word) {
  if (write(STDERR_FILENO, word, std::strlen(word)) < 0) _exit(1);
}

[[noreturn]] void AwaitDeath() {
  Say(kStopped);
  for (;;) pause();
}

Rule RuleOf(const StopPoint& point) {
  Rule rule = On(point.function).Nth(point.nth).MayMiss();
  if (point.accept >= 0) rule.Accept(point.accept);
  const Hook stop = [](PluginCall&) { AwaitDeath(); };
  return point.after ? rule.After(stop) : rule.Before(stop);
}

class Recorder {
 public:
  Recorder(const std::string& journal, const Take& take, const StopPoint& point)
      : journal_(journal),
        steps_(take.steps),
        point_(point),
        runner_(take, [this](const char* method,
                             const Value& args) { return Call(method, args); }),
        begins_(On("write").MayMiss().Before(
            [this](PluginCall&) { journal_->writing = true; })),
        // Made before the fault that stops, so that it runs before it.
        ends_(On("write").MayMiss().After(
            [this](PluginCall& call) { Keep(call); })) {}

  [[noreturn]] void Run() {
    std::optional<Fault> stop;
    for (int i = 0; i < static_cast<int>(steps_.size()); ++i) {
      const bool chosen = i == point_.step;
      if (chosen && !point_.function.empty()) stop.emplace(RuleOf(point_));
      Step(steps_[i]);
      Say(kStepDone);
      if (chosen && point_.function.empty()) AwaitDeath();
    }
    AwaitDeath();
  }

 private:
  // Journals what a write has written.
  void Keep(const PluginCall& call) {
    if (call.result > 0) {
      const uint64_t at = journal_->size;
      std::memcpy(journal_->data + at, call.data, call.result);
      journal_->size = at + call.result;
    }
    journal_->writing = false;
  }

  void Step(const std::string& step) {
    const int frames = AppendedBy(step);
    if (frames > 0 && !journal_->in_segment) {
      journal_->segment_at = journal_->size.load();
      journal_->fed = 0;
      journal_->in_segment = true;
    }
    runner_.Run(step);
    if (frames > 0) {
      journal_->fed += frames;
    } else if (step != "flush") {
      journal_->in_segment = false;  // whatever was fed is drained
    }
  }

  Reply Call(const char* method, const Value& args) {
    std::optional<Reply> reply;
    engine_.Invoke(method, args.get(), [&](FlMethodResponse* response) {
      reply = ReadReply(response);
    });
    engine_.IterateUntil([&] { return reply.has_value(); });
    return *reply;
  }

  JournalFile journal_;
  const Steps steps_;
  const StopPoint point_;
  corvane::Engine engine_;
  TakeRunner runner_;
  Fault begins_;
  Fault ends_;
};

}  // namespace

std::vector<std::string> RecorderCommand(const std::string& journal,
                                         const Take& take,
                                         const StopPoint& point) {
  std::vector<std::string> words = {"/proc/self/exe",
                                    "--recorder",
                                    journal,
                                    take.path,
                                    std::to_string(take.rate),
                                    std::to_string(take.channels),
                                    std::to_string(point.step),
                                    point.function,
                                    std::to_string(point.nth),
                                    point.after ? "after" : "before",
                                    std::to_string(point.accept)};
  words.insert(words.end(), take.steps.begin(), take.steps.end());
  return words;
}

int run_recorder(const std::vector<std::string>& words) {
  constexpr size_t kFixed = 9;
  if (words.size() < kFixed) return 2;
  // What the plugin logs would stand between the words for the test.
  g_log_set_default_handler(
      [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  const Take take{words[1], std::stoi(words[2]), std::stoi(words[3]),
                  Steps(words.begin() + kFixed, words.end())};
  const StopPoint point{std::stoi(words[4]), words[5], std::stoi(words[6]),
                        words[7] == "after", std::stoi(words[8])};
  Recorder(words[0], take, point).Run();
}

}  // namespace corvane_test
