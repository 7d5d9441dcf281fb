// The process that gets killed: an application of the plugin that carries out
// a take, keeps a journal, and can stop dead at a chosen call of the plugin.
#ifndef CORVANE_TESTS_CRASH_RECORDER_H_
#define CORVANE_TESTS_CRASH_RECORDER_H_

#include <string>
#include <vector>

#include "crash/take.h"

namespace corvane_test {

// Where the recorder stops and waits for its death: at the `nth` call of
// `function` once `step` has begun, or behind that step when `function` is
// empty. Step -1: nowhere, it runs on to its end and waits there.
struct StopPoint {
  int step = -1;
  std::string function;
  int nth = 1;
  bool after = false;  // behind the call, not before it
  int accept = -1;     // the call is made for so many bytes only; -1: for all
};

// The command line that makes this program a recorder.
std::vector<std::string> RecorderCommand(const std::string& journal,
                                         const Take& take,
                                         const StopPoint& point);

// What it writes to standard error: after each step, and where it stops.
constexpr char kStepDone[] = ".";
constexpr char kStopped[] = "@";

// The recorder itself, with the arguments behind "--recorder".
int run_recorder(const std::vector<std::string>& arguments);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_RECORDER_H_
