// Takes whose process is killed, and what the files are worth afterwards.
#ifndef CORVANE_TESTS_CRASH_KILL_FIXTURE_H_
#define CORVANE_TESTS_CRASH_KILL_FIXTURE_H_

#include <optional>
#include <string>

#include "crash/recorder.h"
#include "crash/take.h"
#include "support/channel_fixture.h"

namespace corvane_test {

// What is known about a take at the death of its process.
struct Remains {
  Bytes journal;  // all that writes have returned as written
  bool writing = false;
  bool in_segment = false;
  uint64_t segment_at = 0;  // in the journal
  int64_t fed = 0;          // sample frames whose appends were answered
};

// Sample frames answered for and not on disk, beside what the encoder must
// hold back; nothing where no segment of sufficient length was recorded.
struct Loss {
  int64_t lost = 0;
  int64_t formula = 0;
};
std::optional<Loss> LossOf(const Remains& remains, const Bytes& file,
                           size_t old_size);

class KillTest : public ChannelTest {
 protected:
  // Starts a recorder, kills it at `point` and collects its remains. Where the
  // point is nowhere, it is killed as soon as `steps` steps are known done.
  Remains Kill(const Take& take, const StopPoint& point, int steps = 0);

  // The file that the take leaves when nobody interrupts it, on top of `old`.
  Bytes Uninterrupted(Take take, const Bytes& old = {});

  // Brings what a kill left at `take.path` to an end by one of the three ways.
  // The result must be `whole`, the whole frames that were left, and behind
  // them what is recorded now; "start" moves all that was left aside.
  void ResumeAndHold(const Take& take, const Bytes& whole);
  void FinalizeAndHold(const Take& take, const Bytes& whole);
  void StartAndHold(const Take& take, const Bytes& left);

  void Recover(const std::string& method, const Take& take, const Bytes& left,
               const Bytes& whole);

  void RunTake(const Take& take);
};

// The whole frames at the front of `file`, which is a piece of `reference`.
Bytes WholePart(const Bytes& file, const Bytes& reference);

// A decoder, told to be strict, takes every frame and has nothing to say.
void ExpectDecodes(const Bytes& file);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_KILL_FIXTURE_H_
