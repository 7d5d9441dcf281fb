// The keys that are pressed while a take runs. The terminal is this program's
// only while somebody is to press them: in the foreground.
#ifndef CORVANE_HOST_TERMINAL_KEYBOARD_H_
#define CORVANE_HOST_TERMINAL_KEYBOARD_H_

#include <functional>
#include <optional>

#include "engine/loop_event.h"
#include "terminal/console.h"
#include "terminal/job_control.h"
#include "terminal/terminal_loan.h"

namespace corvane {

// Of the thread that runs the main context.
class Keyboard {
 public:
  // Runs `on_key` on the main context for each key that is pressed on `fd`,
  // where that is a terminal; both it and `console` are borrowed. That "?"
  // shows them is noted there. Ctrl-Z takes the live line away and stops the
  // process, whatever `fd` is.
  Keyboard(int fd, Console* console, std::function<void(char)> on_key);
  // Gives the terminal back.
  ~Keyboard() = default;
  Keyboard(const Keyboard&) = delete;
  Keyboard& operator=(const Keyboard&) = delete;

 private:
  void Attend();
  void BePatient();
  void Leave();
  void OnReadable();

  const int fd_;
  Console* const console_;
  bool has_hinted_ = false;
  const std::function<void(char)> on_key_;
  std::optional<TerminalLoan> loan_;   // of a terminal
  std::optional<LoopEvent> keys_;      // while it is held
  std::optional<LoopEvent> patience_;  // while it isn't
  JobControl job_control_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_KEYBOARD_H_
