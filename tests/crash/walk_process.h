// The process of the application in a walk: it has the plugin, carries out one
// step after the other as it is told, and can be killed inside any of them.
#ifndef CORVANE_TESTS_CRASH_WALK_PROCESS_H_
#define CORVANE_TESTS_CRASH_WALK_PROCESS_H_

#include <sys/types.h>

#include <string>
#include <vector>

#include "crash/walk_step.h"

namespace corvane_test {

// What came of a step.
struct Report {
  std::vector<std::string> lines;  // of the log, and replies
  Bytes written;                   // by the plugin's writes that returned
  bool is_killed = false;
  std::string failure;  // of the process, which has ended then
};

class WalkProcess {
 public:
  // Forks, in the working directory. No engine may live in this process.
  explicit WalkProcess(const Walk& walk);
  // Kills it where it still lives.
  ~WalkProcess();
  WalkProcess(const WalkProcess&) = delete;
  WalkProcess& operator=(const WalkProcess&) = delete;

  // Has it carry out step `i` of the walk, which is a call, a restart or a
  // kill, and waits for the end of it.
  Report Do(size_t i);

 private:
  void End(Report* report);

  int socket_ = -1;
  pid_t pid_ = -1;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALK_PROCESS_H_
