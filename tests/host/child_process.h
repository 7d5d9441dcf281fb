// A program run as a child, with its three standard streams in the test's
// hands. Nothing here sleeps: a test waits for what the child writes.
#ifndef CORVANE_TESTS_HOST_CHILD_PROCESS_H_
#define CORVANE_TESTS_HOST_CHILD_PROCESS_H_

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// The test's own environment, with these put in.
std::vector<std::string> merged_environment(
    const std::map<std::string, std::string>& added);
// As exec(3) wants them: they point into `strings`.
std::vector<char*> pointers_to(const std::vector<std::string>& strings);

struct ChildSetup {
  // Columns of a terminal as standard error; 0 for a pipe.
  int terminal_columns = 0;
  // Nobody reads standard output any more.
  bool output_is_closed = false;
  // Standard input is a pipe that the test writes; else it is empty.
  bool input_is_pipe = false;
  // Added to the environment.
  std::map<std::string, std::string> environment;
};

struct ChildResult {
  int status = -1;  // exit status; -1 when a signal ended it
  std::string out;
  std::string err;
};

class Child {
 public:
  Child(const std::vector<std::string>& argv, const ChildSetup& setup);
  // Kills it if it still runs.
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  // Blocks until the child has taken all but what the pipe holds, which is
  // kInputPipeSize bytes at most.
  void Write(const Bytes& bytes);
  void CloseInput();
  void Signal(int signal);
  pid_t pid() const { return pid_; }

  // Reads until standard error holds `text`; fails the test if it never does.
  void AwaitError(const std::string& text);

  // Reads both streams to their ends and waits for the child.
  ChildResult Wait();

  static constexpr int kInputPipeSize = 4096;

 private:
  // Reads once from whichever stream has something; false at both ends.
  bool ReadSome();

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  int err_ = -1;
  ChildResult result_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_CHILD_PROCESS_H_
