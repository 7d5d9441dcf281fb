// One scenario of the sweep: runs it with an injection, recovers what it left,
// and judges both.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_FIXTURE_H_
#define CORVANE_TESTS_FAULTS_SWEEP_FIXTURE_H_

#include <map>
#include <string>
#include <vector>

#include "channel/overrides.h"
#include "faults/faults_fixture.h"
#include "faults/sweep_files.h"
#include "faults/sweep_scenario.h"
#include "faults/sweep_strike.h"
#include "faults/sweep_tally.h"
#include "faults/sweep_watchdog.h"

namespace corvane_test {

class SweepFixture : public FaultsTest {
 protected:
  // What a run did, before anybody judges it.
  struct Ran {
    SweptCalls calls;
    std::map<std::string, int> struck;
    Lines transcript;
    std::vector<GlibLine> glib;
  };

  SweepFixture(SweepScenario scenario, SweepTally* tally);

  // A run and its recovery, judged. Expectations that fail name the run.
  Ran Try(const Strike& strike);

 private:
  void Prepare();
  Ran Run(const SweepSteps& steps, const Strike& strike, bool at_work);
  void Perform(const SweepStep& step);
  void Judge(const SweepSteps& steps, const Ran& ran, bool at_work,
             SweptFiles* files);
  std::map<std::string, Bytes> FilesNow() const;
  void ExpectEveryFrameIsReached(const SweptFiles& files);

  InstanceCount plugins_;
  const WorkingDir working_dir_{Path("")};
  const SweepScenario scenario_;
  SweepTally* const tally_;
  Watchdog watchdog_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_FIXTURE_H_
