// A terminal that hands on each key as it is pressed, and shows none, for as
// long as that is wanted; whatever ends the program, it is given back.
#ifndef CORVANE_HOST_TERMINAL_TERMINAL_LOAN_H_
#define CORVANE_HOST_TERMINAL_TERMINAL_LOAN_H_

#include <array>
#include <csignal>

namespace corvane {

// Whether `fd` is a terminal whose foreground this process is in: anybody else
// is stopped when they read from it or change its ways.
bool is_foreground_of(int fd);

// Of one thread, and one at a time.
class TerminalLoan {
 public:
  // Nothing is taken yet. A program that crashes takes away the live line on
  // `live_fd`, if that isn't negative. Both are borrowed.
  TerminalLoan(int fd, int live_fd);
  // Gives the terminal back.
  ~TerminalLoan();
  TerminalLoan(const TerminalLoan&) = delete;
  TerminalLoan& operator=(const TerminalLoan&) = delete;

  // Whether the terminal is held. What was typed before is thrown away: it was
  // not meant for this. Does nothing, but from the foreground.
  bool Take();

  // The terminal as it was, while this process is in the foreground; who has
  // come into it since has ways of their own.
  void GiveBack();

  bool is_held() const;

 private:
  static constexpr std::array<int, 9> kFatal = {SIGQUIT, SIGILL, SIGTRAP,
                                                SIGABRT, SIGBUS, SIGFPE,
                                                SIGSEGV, SIGSYS, SIGXCPU};

  const int fd_;
  std::array<struct sigaction, kFatal.size()> before_ = {};
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_TERMINAL_LOAN_H_
