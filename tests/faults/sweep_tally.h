// What the whole sweep did: printed at its end, and held against what it must
// have done.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_TALLY_H_
#define CORVANE_TESTS_FAULTS_SWEEP_TALLY_H_

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "faults/sweep_narrator.h"

namespace corvane_test {

class SweepTally : public testing::Environment {
 public:
  // `only` part of the sweep runs: nobody can expect all of it then.
  explicit SweepTally(bool only) : only_(only) {}

  void Count(const std::map<std::string, int>& struck);
  SilentFailureCount* silences() { return &silences_; }

  void TearDown() override;

 private:
  const bool only_;
  int runs_ = 0;
  std::map<std::string, int> struck_;
  SilentFailureCount silences_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_TALLY_H_
