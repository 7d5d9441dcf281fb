// Tells what a run must have said: every answer and log line, word for word, in
// order, out of the calls that the plugin made and how they went. It knows the
// rules of the methods and nothing of the plugin's code; a call out of turn, or
// a failure that is neither told nor on the list of silences, ends it.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_NARRATOR_H_
#define CORVANE_TESTS_FAULTS_SWEEP_NARRATOR_H_

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "faults/sweep_exceptions.h"
#include "faults/sweep_files.h"
#include "faults/sweep_scenario.h"
#include "faults/sweep_strike.h"
#include "support/reply.h"

namespace corvane_test {

// The run went another way than the rules lead.
struct WentAstray : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// How often each silence was kept.
using SilentFailureCount = std::map<SilentFailure, int>;

class Narrator {
 public:
  Narrator(SweptCalls calls, SweptFiles* files, SilentFailureCount* silences);

  void Step(const SweepStep& step);
  void Dispose();
  // All calls of the plugin must have had their turn.
  void End() const;

  struct Line {
    bool is_log;
    std::string text;
  };
  const std::vector<Line>& lines() const { return lines_; }

 private:
  using MaybeError = std::optional<Reply>;

  struct Session {
    bool open = false;
    std::string path;
    bool paused = false;
    size_t carry = 0;  // bytes
    bool codec = false;
    int fill = 0;        // samples that wait for their frame to fill
    bool sent = false;   // anything since the codec was opened
    int64_t frames = 0;  // as the closing line counts them
  };

  // The next call of the plugin, which must be this one; a failure has to be
  // told, or silenced, before the step ends.
  SweptCall Next(const char* name);
  bool IsNext(const char* name) const;
  Reply Told(const char* during, const SweptCall& call);
  void Keep(SilentFailure silence);
  void Log(const std::string& line) { lines_.push_back({true, line}); }

  Reply Answer(const SweepStep& step);
  Reply Start(const std::string& path);
  MaybeError Preserve(const std::string& path, bool* may_replace);
  bool IsTaken(const std::string& slot, bool* may_replace);
  Reply Append(size_t bytes);
  Reply Pause();
  Reply Stop();
  Reply Flush();

  MaybeError Encode(int* samples);
  MaybeError OpenCodec();
  MaybeError AllocateCodec();
  MaybeError SendAndDrain();
  MaybeError WriteFrame();
  MaybeError Finish();
  MaybeError ToldOfCodec(const SweptCall& call);

  void Open(const std::string& path);
  void Close(const std::string& reason);
  Reply Seal(const std::string& path, uint64_t dropped,
             const std::string& label);
  MaybeError RepairAndSync(const std::string& path, adts::Scan* scan);
  MaybeError Trim(const char* during, const std::string& path,
                  adts::Scan* scan);
  MaybeError Read(const char* during, const std::string& path);
  Reply ResumePath(const std::string& path);
  Reply FinalizePath(const std::string& path);
  bool HasWorkingDirectory();
  Reply FinalizeWavOnly(const std::string& path);
  MaybeError PatchWav(const std::string& path, uint32_t data_bytes);

  SweptCalls calls_;
  size_t at_ = 0;
  int untold_ = 0;  // failures so far of this step
  SweptFiles* files_;
  SilentFailureCount* silences_;
  Session session_;
  uint64_t dropped_ = 0;
  bool append_failure_reported_ = false;
  bool quiet_ = false;   // the answer under way is not logged
  std::string subject_;  // the path that this step's errors name
  std::vector<Line> lines_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_NARRATOR_H_
