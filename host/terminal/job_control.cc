#include "terminal/job_control.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

namespace corvane {
namespace {

// A handler can reach nothing else: where it writes which signal has come.
std::atomic<int> the_pipe = -1;

// More signals than the pipe holds say nothing new.
void on_signal(int signal) {
  const int saved_errno = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = write(the_pipe, &byte, 1);
  errno = saved_errno;
}

void handle(int signal, struct sigaction* before) {
  sigaction(signal, nullptr, before);
  if (before->sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = on_signal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

JobControl::JobControl(std::function<void()> before_stop,
                       std::function<void()> on_continue)
    : before_stop_(std::move(before_stop)),
      on_continue_(std::move(on_continue)) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return;
  read_end_ = FileDescriptor(ends[0]);
  write_end_ = FileDescriptor(ends[1]);
  the_pipe = write_end_.get();
  watch_.emplace(
      LoopEvent::WhileReadable(read_end_.get(), [this] { OnSignals(); }));
  handle(SIGTSTP, &stop_before_);
  handle(SIGCONT, &continue_before_);
}

JobControl::~JobControl() {
  if (!watch_) return;
  sigaction(SIGTSTP, &stop_before_, nullptr);
  sigaction(SIGCONT, &continue_before_, nullptr);
  the_pipe = -1;
}

void JobControl::OnSignals() {
  unsigned char signals[16];
  const ssize_t got = read(read_end_.get(), signals, sizeof(signals));
  for (ssize_t i = 0; i < got; ++i) {
    if (signals[i] == SIGTSTP) Stop();
    if (signals[i] == SIGCONT) on_continue_();
  }
}

// By the signal itself: it spares a process that no shell could wake again, as
// SIGSTOP would not.
void JobControl::Stop() const {
  before_stop_();
  struct sigaction own = {};
  sigaction(SIGTSTP, &stop_before_, &own);
  raise(SIGTSTP);
  sigaction(SIGTSTP, &own, nullptr);
  on_continue_();
}

}  // namespace corvane
