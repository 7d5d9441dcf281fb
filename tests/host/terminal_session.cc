#include "host/terminal_session.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "host/child_process.h"

namespace corvane_test {
namespace {

constexpr int kPatienceMs = 60 * 1000;

// None of them is what a terminal that hangs up is set to.
void set_peculiar_ways(int terminal) {
  termios ways = {};
  tcgetattr(terminal, &ways);
  ways.c_lflag &= ~static_cast<tcflag_t>(ECHOK | ECHOCTL);
  ways.c_cc[VERASE] = '\b';
  ways.c_cc[VMIN] = 3;
  tcsetattr(terminal, TCSANOW, &ways);
}

pid_t spawn_leader(const std::vector<std::string>& argv,
                   const std::vector<std::string>& environment,
                   const std::string& terminal, int out) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // The first that a session's leader opens becomes its own.
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, terminal.c_str(),
                                   O_RDWR, 0);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, STDIN_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigaddset(&signals, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID |
                                            POSIX_SPAWN_SETSIGMASK |
                                            POSIX_SPAWN_SETSIGDEF);
  pid_t pid = -1;
  if (posix_spawn(&pid, argv[0].c_str(), &actions, &attributes,
                  pointers_to(argv).data(),
                  pointers_to(environment).data()) != 0) {
    std::abort();
  }
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

std::vector<std::string> shell_running(const std::string& script,
                                       const std::vector<std::string>& argv) {
  std::vector<std::string> words = {
      "/bin/bash", "-c",
      "ulimit -c 0\n" + script +
          "\necho \"[ended $?]\" >/dev/tty\nread -r answer",
      "bash"};
  words.insert(words.end(), argv.begin(), argv.end());
  return words;
}

}  // namespace

TerminalSession::TerminalSession(const std::vector<std::string>& argv,
                                 const Setup& setup) {
  winsize size = {};
  size.ws_row = 24;
  size.ws_col = static_cast<unsigned short>(setup.columns);
  char name[64];
  int out[2];
  if (openpty(&person_, &terminal_, name, nullptr, &size) != 0 ||
      pipe2(out, O_CLOEXEC) != 0) {
    std::abort();
  }
  fcntl(person_, F_SETFD, FD_CLOEXEC);
  fcntl(terminal_, F_SETFD, FD_CLOEXEC);
  out_fd_ = out[0];
  set_peculiar_ways(terminal_);
  ways_before_ = Ways();
  Type(setup.typed_before);
  auto environment = setup.environment;
  environment.insert({"TERM", "xterm"});
  environment.insert({"LC_ALL", "C"});
  shell_ = spawn_leader(shell_running(setup.script, argv),
                        merged_environment(environment), name, out[1]);
  close(out[1]);
}

TerminalSession::~TerminalSession() {
  close(person_);
  close(terminal_);
  close(out_fd_);
  if (shell_ < 0) return;
  kill(-shell_, SIGKILL);
  waitpid(shell_, nullptr, 0);
}

void TerminalSession::Type(const std::string& keys) {
  EXPECT_EQ(write(person_, keys.data(), keys.size()),
            static_cast<ssize_t>(keys.size()));
}

void TerminalSession::Resize(int columns) {
  winsize size = {};
  size.ws_row = 24;
  size.ws_col = static_cast<unsigned short>(columns);
  EXPECT_EQ(ioctl(person_, TIOCSWINSZ, &size), 0);
}

void TerminalSession::Signal(int signal) {
  const std::string mark = "[pid ";
  const size_t at = shown_.find(mark);
  ASSERT_NE(at, std::string::npos) << shown_;
  EXPECT_EQ(kill(std::stoi(shown_.substr(at + mark.size())), signal), 0);
}

void TerminalSession::Await(const std::string& text) {
  size_t at = 0;
  while ((at = shown_.find(text, awaited_)) == std::string::npos) {
    if (!ReadSome()) {
      FAIL() << "never showed \"" << text << "\" but:\n" << shown_;
    }
  }
  awaited_ = at + text.size();
}

void TerminalSession::AwaitThat(
    const std::function<bool(const std::string& shown)>& is) {
  while (!is(shown_)) {
    if (!ReadSome()) FAIL() << "was never so:\n" << shown_;
  }
}

int TerminalSession::AwaitEnd() {
  Await("[ended ");
  Await("]");
  return std::stoi(shown_.substr(shown_.rfind("[ended ") + 7));
}

std::string TerminalSession::Ways() const {
  termios ways = {};
  EXPECT_EQ(tcgetattr(person_, &ways), 0);
  std::ostringstream text;
  text << std::hex << ways.c_iflag << ' ' << ways.c_oflag << ' ' << ways.c_cflag
       << ' ' << ways.c_lflag << ':';
  for (const cc_t character : ways.c_cc) {
    text << ' ' << static_cast<int>(character);
  }
  return text.str();
}

std::string TerminalSession::Out() {
  Type("\n");
  while (ReadSome()) {
  }
  waitpid(shell_, nullptr, 0);
  shell_ = -1;
  return out_;
}

// One read of whichever has something; false at the end of standard output.
bool TerminalSession::ReadSome() {
  pollfd entries[] = {{person_, POLLIN, 0}, {out_fd_, POLLIN, 0}};
  if (poll(entries, std::size(entries), kPatienceMs) <= 0) return false;
  char buffer[4096];
  if (entries[0].revents != 0) {
    const ssize_t got = read(person_, buffer, sizeof(buffer));
    if (got > 0) shown_.append(buffer, static_cast<size_t>(got));
    if (got > 0) return true;
  }
  if (entries[1].revents == 0) return false;
  const ssize_t got = read(out_fd_, buffer, sizeof(buffer));
  if (got > 0) out_.append(buffer, static_cast<size_t>(got));
  return got > 0;
}

}  // namespace corvane_test
