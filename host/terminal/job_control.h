// Ctrl-Z and what follows it, as events of the main loop.
#ifndef CORVANE_HOST_TERMINAL_JOB_CONTROL_H_
#define CORVANE_HOST_TERMINAL_JOB_CONTROL_H_

#include <csignal>
#include <functional>
#include <optional>

#include "engine/file_descriptor.h"
#include "engine/loop_event.h"

namespace corvane {

// Of the thread that runs the main context, and one at a time.
class JobControl {
 public:
  // SIGTSTP runs `before_stop`, then stops the process as it does by itself,
  // unless the parent has told to ignore it. Whatever stopped the process,
  // SIGCONT runs `on_continue`.
  JobControl(std::function<void()> before_stop,
             std::function<void()> on_continue);
  // Both signals do what they did before.
  ~JobControl();
  JobControl(const JobControl&) = delete;
  JobControl& operator=(const JobControl&) = delete;

 private:
  void OnSignals();
  void Stop() const;

  const std::function<void()> before_stop_;
  const std::function<void()> on_continue_;
  FileDescriptor read_end_;
  FileDescriptor write_end_;
  std::optional<LoopEvent> watch_;
  struct sigaction stop_before_ = {};
  struct sigaction continue_before_ = {};
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_JOB_CONTROL_H_
