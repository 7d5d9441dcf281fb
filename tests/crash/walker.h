// The inside of a walk's process.
#ifndef CORVANE_TESTS_CRASH_WALKER_H_
#define CORVANE_TESTS_CRASH_WALKER_H_

#include <glib.h>

#include <memory>
#include <string>

#include "crash/walk_step.h"
#include "engine/engine.h"
#include "support/faults.h"

namespace corvane_test {

// What a packet from the process holds: its first byte says so.
constexpr char kLinePacket = 'l';
constexpr char kWrittenPacket = 'w';
constexpr char kDonePacket = 'd';
// Larger than any of them.
constexpr size_t kMaxPacket = 1 << 16;

class Walker {
 public:
  // Takes the numbers of steps from `socket` and sends packets into it.
  Walker(const Walk& walk, int socket);

  // Carries out steps until the socket ends.
  [[noreturn]] void Run();

 private:
  void Do(size_t i);
  void Post(const Step& step);
  void AwaitReplies();
  void Restart();
  // Sends all calls that the kill strikes, and doesn't come back.
  [[noreturn]] void DieIn(size_t kill);
  Rule DeathIn(const Step& kill) const;
  void StartEngine();
  void HearGlib(GLogLevelFlags level, const std::string& line) const;
  void Say(char kind, const void* data, size_t size) const;
  void SayLine(const std::string& line) const;

  const Walk& walk_;
  const int socket_;
  const Held held_at_first_;
  const Fault tap_;
  std::unique_ptr<corvane::Engine> engine_;
  int unanswered_ = 0;
  bool is_ending_ = false;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALKER_H_
