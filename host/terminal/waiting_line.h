// A live line for work that has no figures of its own to show: how long it has
// been going on.
#ifndef CORVANE_HOST_TERMINAL_WAITING_LINE_H_
#define CORVANE_HOST_TERMINAL_WAITING_LINE_H_

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "terminal/console.h"

namespace corvane {

class WaitingLine {
 public:
  // Shows `text` (printable) and the time gone by on `console` (borrowed) once
  // `delay` has passed; most work is over before that. On a terminal only.
  WaitingLine(Console* console, std::string text,
              std::chrono::milliseconds delay = std::chrono::seconds(1));
  // Takes the line away.
  ~WaitingLine();
  WaitingLine(const WaitingLine&) = delete;
  WaitingLine& operator=(const WaitingLine&) = delete;

 private:
  // A thread of its own: the work may block the one that waits for it.
  void Run(std::chrono::milliseconds delay);
  void Draw(std::chrono::milliseconds gone);

  Console* const console_;
  const std::string text_;
  std::mutex mutex_;  // guards over_
  std::condition_variable changed_;
  bool over_ = false;
  std::thread thread_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_WAITING_LINE_H_
