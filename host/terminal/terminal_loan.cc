#include "terminal/terminal_loan.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>

namespace corvane {
namespace {

// What is needed to give the terminal back.
struct Loan {
  std::atomic<bool> is_held = false;
  int fd = -1;
  termios before = {};
  int live_fd = -1;
};

// A handler of a signal that ends the program has nothing else to go by.
Loan the_loan;

// Nobody is stopped for what they do in here: the foreground may be lost
// between a look and the act.
class TtouBlocked {
 public:
  TtouBlocked() {
    sigset_t ttou;
    sigemptyset(&ttou);
    sigaddset(&ttou, SIGTTOU);
    pthread_sigmask(SIG_BLOCK, &ttou, &before_);
  }
  ~TtouBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  TtouBlocked(const TtouBlocked&) = delete;
  TtouBlocked& operator=(const TtouBlocked&) = delete;

 private:
  sigset_t before_ = {};
};

// Neither waits for what is still to be shown, for it may never be.
bool set(int fd, const termios& ways) {
  const TtouBlocked blocked;
  return tcsetattr(fd, TCSANOW, &ways) == 0;
}

void give_back() {
  if (!the_loan.is_held.exchange(false)) return;
  if (is_foreground_of(the_loan.fd)) set(the_loan.fd, the_loan.before);
}

// A terminal that Ctrl-S has stopped is left alone.
void erase_live_line() {
  pollfd entry = {the_loan.live_fd, POLLOUT, 0};
  if (poll(&entry, 1, 0) != 1) return;
  constexpr char kErase[] = "\x1b[0m\r\x1b[J";
  [[maybe_unused]] const ssize_t written =
      write(the_loan.live_fd, kErase, sizeof(kErase) - 1);
}

// The default action takes its course when this returns.
void on_fatal(int signal) {
  if (the_loan.is_held) erase_live_line();
  give_back();
  raise(signal);
}

}  // namespace

bool is_foreground_of(int fd) { return tcgetpgrp(fd) == getpgrp(); }

TerminalLoan::TerminalLoan(int fd, int live_fd) : fd_(fd) {
  the_loan.live_fd = live_fd;
  struct sigaction action = {};
  action.sa_handler = on_fatal;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigemptyset(&action.sa_mask);
  for (size_t i = 0; i < kFatal.size(); ++i) {
    sigaction(kFatal[i], nullptr, &before_[i]);
    if (before_[i].sa_handler == SIG_IGN) continue;
    sigaction(kFatal[i], &action, nullptr);
  }
}

TerminalLoan::~TerminalLoan() {
  GiveBack();
  for (size_t i = 0; i < kFatal.size(); ++i) {
    sigaction(kFatal[i], &before_[i], nullptr);
  }
}

bool TerminalLoan::Take() {
  if (!is_foreground_of(fd_)) return false;
  termios ways = {};
  if (!is_held()) {
    if (tcgetattr(fd_, &the_loan.before) != 0) return false;
    the_loan.fd = fd_;
    the_loan.is_held = true;
    tcflush(fd_, TCIFLUSH);
  }
  ways = the_loan.before;
  ways.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  ways.c_cc[VMIN] = 1;
  ways.c_cc[VTIME] = 0;
  if (!set(fd_, ways)) GiveBack();
  return is_held();
}

void TerminalLoan::GiveBack() { give_back(); }

bool TerminalLoan::is_held() const { return the_loan.is_held; }

}  // namespace corvane
