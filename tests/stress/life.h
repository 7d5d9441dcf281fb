// One plugin from registration to its end, with calls at random moments.
#ifndef CORVANE_TESTS_STRESS_LIFE_H_
#define CORVANE_TESTS_STRESS_LIFE_H_

#include <corvane/corvane_plugin.h>

#include <deque>
#include <string>
#include <thread>

#include "channel/overrides.h"
#include "engine/engine.h"
#include "stress/expected.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/value.h"

namespace corvane_test {

// How a life ends. All but the first come in the middle of the work.
enum class End {
  kIdle,      // every call was answered before the engine goes down
  kShutdown,  // the engine goes down; answers under way are lost
  kDispose,   // the plugin is disposed, its engine lives on
  kReplace,   // another handler takes the method channel
};

// Main thread. What goes against a rule fails the running test.
class Life {
 public:
  explicit Life(Chance* chance);

  void Act();  // something that may come at any moment
  void EndBy(End end);

 private:
  struct Choice;
  static const Choice kChoices[];

  void Start();
  void Append();
  void Pause();
  void Resume();
  void Stop();
  void Cancel();
  void Flush();
  void ResumePath();
  void FinalizePath();
  void BadCall();
  void UnknownMethod();
  void Listen();
  void StopListening();
  void Dispatch();
  void AwaitSome();

  void Call(const char* method, const Value& args, const Reply& due);
  void OnReply(const std::string& method, const Reply& reply);
  void OnLogLine(const std::string& message);
  void CheckThread(const std::string& what);
  // A path of an earlier take, or one where nothing is.
  std::string SomePath();
  void ReplaceMethodChannel();
  void CheckLeftovers();
  void CheckFiles();

  struct Due {
    std::string method;
    Reply reply;
  };

  const std::thread::id main_thread_ = std::this_thread::get_id();
  Chance* const chance_;
  const TempDir dir_;
  const InstanceCount plugins_{corvane_plugin_get_type()};
  const InstanceCount calls_{fl_method_call_get_type()};
  const InstanceCount channels_{fl_event_channel_get_type()};
  corvane::Engine engine_;
  Expected expected_;
  std::deque<Due> due_;  // answers, in the order in which they are due
  int takes_ = 0;
  bool listening_ = false;
  bool ended_ = false;  // the engine has gone down
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_STRESS_LIFE_H_
