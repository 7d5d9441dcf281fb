// What the sweep does with the plugin, as plain values.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_SCENARIO_H_
#define CORVANE_TESTS_FAULTS_SWEEP_SCENARIO_H_

#include <map>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/value.h"

namespace corvane_test {

// A call, or what happens around the plugin. All calls are posted at once, up
// to the next kAwait: "finalizePath" needs one before it, because it asks for
// the working directory while the worker is still busy.
enum class SweepDo {
  kStart,
  kAppend,  // `count` bytes
  kPause,
  kResume,
  kStop,
  kCancel,
  kFlush,
  kResumePath,
  kFinalizePath,
  kFinalizeWavOnly,
  kAwait,   // the answers so far
  kLitter,  // `count` foreign bytes get behind the end of a file
};

struct SweepStep {
  SweepDo what;
  std::string path;  // relative to the sweep's folder
  int count = 0;
};
using SweepSteps = std::vector<SweepStep>;

struct SweepScenario {
  std::string name;
  std::map<std::string, Bytes> files;  // there from the beginning
  SweepSteps steps;
  // The plugin is disposed with all of its calls still queued.
  bool disposed_at_work = false;
};

std::vector<SweepScenario> SweepScenarios();

const char* MethodOf(const SweepStep& step);
Value ArgsOf(const SweepStep& step);
Bytes LitterOf(const SweepStep& step);

// Every take of the sweep is mono, at this rate.
constexpr int kSweepRate = 48000;

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_SCENARIO_H_
