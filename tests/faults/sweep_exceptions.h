// Where a failure of a call is, by decision, neither answered nor logged. This
// is the whole list: the sweep takes any other silence for a defect, and an
// entry that no injection ever calls for, too.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_EXCEPTIONS_H_
#define CORVANE_TESTS_FAULTS_SWEEP_EXCEPTIONS_H_

#include <array>

namespace corvane_test {

enum class SilentFailure {
  kStatMeansNothingThere,
  kStatWithoutErrno,
  kWriteWithoutErrno,
  kFopenWithoutErrno,
  kNoWorkingDirectory,
  kMadeAgain,
  kBehindAnotherFailure,
  kBehindAHalfWrittenFrame,
};

struct NamedSilentFailure {
  SilentFailure silence;
  const char* reason;
};

constexpr std::array<NamedSilentFailure, 8> kSilentFailures = {{
    {SilentFailure::kStatMeansNothingThere,
     "start: what cannot be looked at is not there, so a capture in its place "
     "is cut to nothing, and an orphan in a slot replaced"},
    {SilentFailure::kStatWithoutErrno,
     "a stat that gives no reason proves nothing: an orphan slot stays taken, "
     "and a WAV file counts as having no audio"},
    {SilentFailure::kWriteWithoutErrno,
     "a write that gives no reason passes for a complete one: the frame is "
     "counted, and recording goes on"},
    {SilentFailure::kFopenWithoutErrno,
     "a WAV file that doesn't open and gives no reason passes for repaired"},
    {SilentFailure::kNoWorkingDirectory,
     "finalizePath: a relative path then counts from the root, and matches "
     "another only if that one was resolved likewise"},
    {SilentFailure::kMadeAgain, "an interrupted write or pread is made again"},
    {SilentFailure::kBehindAnotherFailure,
     "one answer tells one failure: the first of a seal, of a repair, of the "
     "reads of a scan; the rest is released all the same"},
    {SilentFailure::kBehindAHalfWrittenFrame,
     "the rest of a half-written frame is made up from those behind it, which "
     "no scan can then reach"},
}};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_EXCEPTIONS_H_
