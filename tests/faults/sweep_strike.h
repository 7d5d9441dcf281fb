// One injection of the sweep, as a value that prints itself in the form in
// which CORVANE_SWEEP takes it, and the rules that carry it out.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_STRIKE_H_
#define CORVANE_TESTS_FAULTS_SWEEP_STRIKE_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/faults.h"

namespace corvane_test {

// The errno values that every call is failed with, and their names. A libav
// call gets the AVERROR of it; one that answers with null knows no reasons.
struct SweepErrno {
  int number;
  const char* name;
};
const std::vector<SweepErrno>& SweepErrnos();

struct Strike {
  enum class How {
    kOnce,
    kForGood,  // from the nth call on
    // The nth write takes a few bytes, and the failure comes behind them.
    kHalfOnce,
    kHalfForGood,
  };

  std::string call = "*";  // a function's name, or any that can fail
  int nth = 0;             // 0: nothing is struck
  int error = 0;
  How how = How::kOnce;
};

// "write 3 ENOSPC once"; the words of the four ways are once, good, half and
// half-good.
std::string ToString(const Strike& strike);
// Ends the test program at a text of another form.
Strike ParseStrike(const std::string& text);

// A call of the plugin, with what a hook alone gets to see.
struct SweptCall : PluginCall {
  Bytes written;          // by a write, as far as it went
  int64_t file_size = 0;  // as a stat found it
};
using SweptCalls = std::vector<SweptCall>;

// Whether the plugin was told that the call failed.
bool HasFailed(const PluginCall& call);
// Whether the call answers with null, so that all its failures are alike.
bool FailsWithNull(const std::string& name);

// Carries out the strike and records every call, as long as it lives. That the
// strike strikes at all is up to the caller.
class Injection {
 public:
  explicit Injection(const Strike& strike);

  const SweptCalls& calls() const { return calls_; }
  // How often each function was struck.
  const std::map<std::string, int>& struck() const { return struck_; }

 private:
  Rule Failure(const Strike& strike);
  void Record(const PluginCall& call);

  SweptCalls calls_;
  std::map<std::string, int> struck_;
  std::optional<Fault> failure_;
  std::optional<Fault> half_;
  Fault tap_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_STRIKE_H_
