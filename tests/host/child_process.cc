#include "host/child_process.h"

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

extern char** environ;

namespace corvane_test {

std::vector<std::string> merged_environment(
    const std::map<std::string, std::string>& added) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (added.count(text.substr(0, text.find('='))) == 0) {
      result.push_back(text);
    }
  }
  for (const auto& [name, value] : added) result.push_back(name + "=" + value);
  return result;
}

std::vector<char*> pointers_to(const std::vector<std::string>& strings) {
  std::vector<char*> result;
  result.reserve(strings.size() + 1);
  for (const std::string& text : strings) {
    result.push_back(const_cast<char*>(text.c_str()));
  }
  result.push_back(nullptr);
  return result;
}

namespace {

// Longer than any test takes: past it the child hangs.
constexpr int kHangMs = 60 * 1000;

void check(bool worked, const char* what) {
  if (worked) return;
  perror(what);
  std::abort();
}

void close_if_open(int* fd) {
  if (*fd >= 0) close(*fd);
  *fd = -1;
}

struct Pipe {
  int read_end;
  int write_end;
};

Pipe make_pipe() {
  int ends[2];
  check(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
  return {ends[0], ends[1]};
}

// The test's end is the read end, as with a pipe.
Pipe make_terminal(int columns) {
  winsize size = {};
  size.ws_row = 24;
  size.ws_col = static_cast<unsigned short>(columns);
  Pipe ends = {};
  check(openpty(&ends.read_end, &ends.write_end, nullptr, nullptr, &size) == 0,
        "openpty");
  fcntl(ends.read_end, F_SETFD, FD_CLOEXEC);
  fcntl(ends.write_end, F_SETFD, FD_CLOEXEC);
  return ends;
}

// The child starts with the signals as a shell would leave them.
pid_t spawn(const std::vector<std::string>& argv,
            const std::vector<std::string>& environment, int in, int out,
            int err) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  sigaddset(&signals, SIGPIPE);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t pid = -1;
  check(posix_spawn(&pid, argv[0].c_str(), &actions, &attributes,
                    pointers_to(argv).data(),
                    pointers_to(environment).data()) == 0,
        "posix_spawn");
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

// One read; false at the end, which a terminal reports as an error.
bool read_into(int fd, std::string* text) {
  char buffer[4096];
  const ssize_t got = read(fd, buffer, sizeof(buffer));
  if (got <= 0) return false;
  text->append(buffer, static_cast<size_t>(got));
  return true;
}

}  // namespace

Child::Child(const std::vector<std::string>& argv, const ChildSetup& setup) {
  const Pipe in = make_pipe();
  const Pipe out = make_pipe();
  const Pipe err = setup.terminal_columns > 0
                       ? make_terminal(setup.terminal_columns)
                       : make_pipe();
  in_ = in.write_end;
  out_ = out.read_end;
  err_ = err.read_end;
  check(fcntl(in_, F_SETPIPE_SZ, kInputPipeSize) == kInputPipeSize,
        "F_SETPIPE_SZ");
  if (!setup.input_is_pipe) CloseInput();
  if (setup.output_is_closed) close_if_open(&out_);
  pid_ = spawn(argv, merged_environment(setup.environment), in.read_end,
               out.write_end, err.write_end);
  close(in.read_end);
  close(out.write_end);
  close(err.write_end);
}

Child::~Child() {
  CloseInput();
  close_if_open(&out_);
  close_if_open(&err_);
  if (pid_ < 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

void Child::Write(const Bytes& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t got = write(in_, bytes.data() + done, bytes.size() - done);
    check(got > 0, "write to the child");
    done += static_cast<size_t>(got);
  }
}

void Child::CloseInput() { close_if_open(&in_); }

void Child::Signal(int signal) { check(kill(pid_, signal) == 0, "kill"); }

void Child::AwaitError(const std::string& text) {
  while (result_.err.find(text) == std::string::npos) {
    if (!ReadSome()) {
      FAIL() << "never said \"" << text << "\" but:\n" << result_.err;
    }
  }
}

ChildResult Child::Wait() {
  while (ReadSome()) {
  }
  int status = 0;
  check(waitpid(pid_, &status, 0) == pid_, "waitpid");
  pid_ = -1;
  result_.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result_;
}

bool Child::ReadSome() {
  if (out_ < 0 && err_ < 0) return false;
  pollfd entries[] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
  check(poll(entries, std::size(entries), kHangMs) > 0, "waiting for a child");
  if (entries[0].revents != 0 && !read_into(out_, &result_.out)) {
    close_if_open(&out_);
  }
  if (entries[1].revents != 0 && !read_into(err_, &result_.err)) {
    close_if_open(&err_);
  }
  return true;
}

}  // namespace corvane_test
