// One random walk: the files, the process of the plugin, and the model beside
// them, compared at every step.
#ifndef CORVANE_TESTS_CRASH_WALK_RUN_H_
#define CORVANE_TESTS_CRASH_WALK_RUN_H_

#include <optional>
#include <string>

#include "crash/walk_model.h"
#include "crash/walk_process.h"
#include "support/files.h"

namespace corvane_test {

class WalkRun {
 public:
  explicit WalkRun(const Walk& walk);

  // What is wrong at the first step at which something is; empty: all's well.
  std::string Run();

  int kills() const { return kills_; }
  // Kills that found calls unanswered.
  int kills_inside() const { return kills_inside_; }

 private:
  // Each carries out step `at_` and moves `at_` behind it.
  std::string Compare();
  std::string Kill();
  void ChangeFiles();

  const Walk walk_;
  size_t at_ = 0;
  const TempDir folder_;
  const WorkingDir inside_;
  WalkModel model_;
  std::optional<WalkProcess> process_;
  int kills_ = 0;
  int kills_inside_ = 0;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALK_RUN_H_
