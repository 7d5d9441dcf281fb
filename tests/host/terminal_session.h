// A program at a terminal of its own, which a shell has given it; the test is
// the person at the keys. Nothing here sleeps.
#ifndef CORVANE_TESTS_HOST_TERMINAL_SESSION_H_
#define CORVANE_TESTS_HOST_TERMINAL_SESSION_H_

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace corvane_test {

class TerminalSession {
 public:
  struct Setup {
    int columns = 80;
    // What the shell does with the program, which is "$@", and its pid(s). It
    // leads the session, so the terminal outlives the program.
    std::string script = "\"$@\"";
    // Typed before there is a program.
    std::string typed_before;
    std::map<std::string, std::string> environment;
  };

  // Standard output is a pipe. When the script has ended "[ended STATUS]" is
  // shown.
  TerminalSession(const std::vector<std::string>& argv, const Setup& setup);
  // Hangs up, and ends the shell if it still runs.
  ~TerminalSession();
  TerminalSession(const TerminalSession&) = delete;
  TerminalSession& operator=(const TerminalSession&) = delete;

  void Type(const std::string& keys);
  void Resize(int columns);
  // To the program that says "[pid N]".
  void Signal(int signal);

  // Reads until `text` is shown behind what was awaited before; fails the test
  // if it never is.
  void Await(const std::string& text);
  // Reads until everything that was shown so far `is` as it should be.
  void AwaitThat(const std::function<bool(const std::string& shown)>& is);
  // Waits for the end of the script; returns its status, as a shell tells it.
  int AwaitEnd();

  // The terminal's settings at this moment, as text; those from before there
  // was a program.
  std::string Ways() const;
  const std::string& ways_before() const { return ways_before_; }

  // Everything so far.
  const std::string& shown() const { return shown_; }
  // Lets the shell go; returns what came on standard output.
  std::string Out();

 private:
  bool ReadSome();

  pid_t shell_ = -1;
  int terminal_ = -1;  // kept open, so that it stays as it is left
  int person_ = -1;    // its other end
  int out_fd_ = -1;
  std::string ways_before_;
  std::string shown_;
  std::string out_;
  size_t awaited_ = 0;  // how much of what is shown
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_TERMINAL_SESSION_H_
