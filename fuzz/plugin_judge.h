// What must come of a message, whoever sends it: its refusal from the table of
// arguments, its step in the walk's model, or the promises that always hold.
#ifndef CORVANE_FUZZ_PLUGIN_JUDGE_H_
#define CORVANE_FUZZ_PLUGIN_JUDGE_H_

#include <optional>
#include <string>

#include "crash/walk_model.h"
#include "plugin_driver.h"

namespace corvane_fuzz {

// Whether every path in the arguments stays inside the working directory. Other
// messages are not sent: a fuzzer would find the files of its owner.
bool IsConfined(const Message& message);

// The answer to a call that the argument checks refuse, or that nobody knows.
std::optional<corvane_test::Reply> RefusalOf(const Message& message);

// The step of the walk that a sound call is, where the walk knows such steps.
std::optional<corvane_test::Step> StepOf(const Message& message);

// Follows the files of a folder, its working directory, through messages and
// what is done around them.
class PluginJudge {
 public:
  explicit PluginJudge(const std::string& folder);

  void AfterRefusal(const std::string& method,
                    const corvane_test::Reply& refusal, const Outcome& outcome);
  void AfterStep(const corvane_test::Step& step, const Outcome& outcome);
  // A sound call that the model has no words for: from here on it is silent.
  void AfterOther(const std::string& method, const Outcome& outcome);
  void AfterRestart(const Outcome& outcome);
  // The files were changed around the plugin.
  void AfterChange();

  const corvane_test::World& world() const { return world_; }
  bool MayRemove(const std::string& path) const;

 private:
  // Takes a new look at the files and holds them against the last one.
  void Look(const std::string& method);
  void HoldModel();

  const std::string folder_;
  std::optional<corvane_test::WalkModel> model_;
  corvane_test::World world_;
};

// What finalizePath answers for a file of this content that no take has open.
corvane_test::Reply SealedReply(const std::string& path, const Bytes& content);

}  // namespace corvane_fuzz

#endif  // CORVANE_FUZZ_PLUGIN_JUDGE_H_
