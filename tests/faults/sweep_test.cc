// The sweep: every call that the plugin makes in a scenario is made to fail,
// one by one, with every errno, once and from then on. Whatever happens: each
// call is answered once and in order, each failure is told in the promised
// words, nothing hangs or leaks, and every whole frame is in the file and comes
// back. One run alone:
//
//   CORVANE_SWEEP="write 3 ENOSPC once" sweep_test --gtest_filter='*WholeTake'
//
// Memory that cannot be allocated is outside; see sweep_tally.cc.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include "faults/sweep_fixture.h"

namespace corvane_test {
namespace {

class SweepTest : public SweepFixture {
 public:
  SweepTest(SweepScenario scenario, SweepTally* tally)
      : SweepFixture(std::move(scenario), tally) {}

  void TestBody() override {
    const char* alone = getenv("CORVANE_SWEEP");
    if (alone != nullptr) {
      Try(ParseStrike(alone));
      return;
    }
    calls_ = Try(Strike()).calls;
    // One more than there are: the run in which nothing is left to strike.
    EXPECT_TRUE(
        Try({"*", static_cast<int>(calls_.size()) + 1, EIO}).struck.empty());
    StrikeEachCallOnce();
    StrikeEverythingFromEachCallOn();
    StrikeEachFunctionFromEachCallOn();
    StrikeBehindHalfAFrame();
  }

 private:
  // The nth call of all is some function's mth call: this strikes both.
  void StrikeEachCallOnce() {
    for (size_t i = 0; i < calls_.size(); ++i) {
      TryEachErrno({"*", static_cast<int>(i) + 1}, calls_[i].name);
    }
  }

  void StrikeEverythingFromEachCallOn() {
    for (size_t i = 0; i < calls_.size(); ++i) {
      TryEachErrno({"*", static_cast<int>(i) + 1, 0, Strike::How::kForGood},
                   "*");
    }
  }

  void StrikeEachFunctionFromEachCallOn() {
    std::map<std::string, int> count;
    for (const SweptCall& call : calls_) {
      TryEachErrno({call.name, ++count[call.name], 0, Strike::How::kForGood},
                   call.name);
    }
  }

  void StrikeBehindHalfAFrame() {
    int count = 0;
    for (const SweptCall& call : calls_) {
      if (call.name != std::string("write")) continue;
      ++count;
      TryEachErrno({"write", count, 0, Strike::How::kHalfOnce}, "write");
      TryEachErrno({"write", count, 0, Strike::How::kHalfForGood}, "write");
    }
  }

  // `first` is the function that is struck first.
  void TryEachErrno(Strike strike, const std::string& first) {
    for (const SweepErrno& error : SweepErrnos()) {
      if (HasFailure()) return;  // one run is enough to look into
      strike.error = error.number;
      EXPECT_FALSE(Try(strike).struck.empty()) << ToString(strike);
      if (FailsWithoutReason(first)) return;
    }
  }

  // Null says nothing, so there is no second way to fail.
  static bool FailsWithoutReason(const std::string& name) {
    return FailsWithNull(name) && name.rfind("av", 0) == 0;
  }

  SweptCalls calls_;  // of a run in which nothing is struck
};

int RunSweep() {
  const bool only =
      testing::GTEST_FLAG(filter) != "*" || getenv("CORVANE_SWEEP") != nullptr;
  auto* tally = new SweepTally(only);
  testing::AddGlobalTestEnvironment(tally);  // which takes it over
  for (const SweepScenario& scenario : SweepScenarios()) {
    testing::RegisterTest("SweepTest", scenario.name.c_str(), nullptr, nullptr,
                          __FILE__, __LINE__, [=]() -> SweepTest* {
                            return new SweepTest(scenario, tally);
                          });
  }
  return RUN_ALL_TESTS();
}

}  // namespace
}  // namespace corvane_test

int main(int argc, char** argv) {
  // Thousands of small files that nobody keeps: memory serves them best.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
  testing::InitGoogleTest(&argc, argv);
  return corvane_test::RunSweep();
}
