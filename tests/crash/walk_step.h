// One step of a random walk, as a value that prints itself as source text, so
// that a failing walk can be pasted into a test.
#ifndef CORVANE_TESTS_CRASH_WALK_STEP_H_
#define CORVANE_TESTS_CRASH_WALK_STEP_H_

#include <string>
#include <vector>

#include "support/chance.h"
#include "support/reply.h"
#include "support/value.h"

namespace corvane_test {

enum class Do {
  kStart,
  kAppend,  // `count` bytes
  kPause,
  kResume,
  kStop,
  kCancel,
  kFlush,
  kResumePath,
  kFinalizePath,  // into the path numbered `count`
  kFinalizeWavOnly,
  kUnknown,
  kBadCall,  // the one numbered `count`
  // What happens around the plugin.
  kRestart,      // another plugin takes over
  kTear,         // `count` bytes are gone from the end
  kLitter,       // `count` foreign bytes are behind the end
  kForeignFile,  // of `count` bytes, where there is nothing
  kFolder,       // with a file in it, where there is nothing
  kRemove,       // a file that is not being recorded
  kFillSlots,    // with litter, all orphan slots of a path but `count`
  // SIGKILL. The next calls are sent without waiting for a reply: the plugin's
  // `count`th system or codec call is its last and not carried out; or, where
  // `bytes` isn't 0, its `count`th write, of so many bytes at most. When they
  // were all answered before, or `count` is 0, it strikes an idle plugin.
  kKill,
};

struct Step {
  Do what;
  int path = 0;  // into kWalkPaths
  int rate = 48000;
  int channels = 1;
  int count = 0;
  int bytes = 0;
};
using Walk = std::vector<Step>;

// Relative to the folder of the walk. "./a.aac" is the first file once more;
// the last two have no folder most of the time, or a file in its place.
const std::vector<std::string> kWalkPaths = {"a.aac", "b", "./a.aac",
                                             "missing/c.aac", "b/d.aac"};

std::string ToString(const Walk& walk);

// The calls that a kill finds unanswered: those behind step `kill`.
Walk CallsBehind(const Walk& walk, size_t kill);

// What the channel knows a call by, and what goes with it.
const char* MethodOf(const Step& step);
Value ArgsOf(const Step& step);
Step RandomStep(Chance* chance);

// Calls that the argument checks refuse, and their answers.
struct BadCall {
  const char* method;
  Value args;
  Reply answer;
};
std::vector<BadCall> BadCalls();

// The bytes of foreign files and litter: none begins an ADTS header.
Bytes Foreign(int count);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALK_STEP_H_
