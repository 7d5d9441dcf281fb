// When a take is flushed: what was recorded must not wait for the system to
// write it to the disk some time.
#ifndef CORVANE_HOST_TAKE_FLUSH_CLOCK_H_
#define CORVANE_HOST_TAKE_FLUSH_CLOCK_H_

#include <cstdint>
#include <optional>

#include "engine/engine.h"
#include "engine/loop_event.h"
#include "take/ending.h"

namespace corvane {

struct FlushFigures {
  int64_t count = 0;       // that were answered
  int64_t longest_us = 0;  // from the call to its answer
};

// Flushes one interval after the start of the flush before, or of the take;
// never while one is under way, and only where audio was appended since. Its
// clock stands still with the machine, so a suspend leaves no backlog. It must
// outlive the answers to its flushes.
class FlushClock {
 public:
  // Borrows both; a flush that fails ends the take. `every_us` 0: never.
  FlushClock(Engine* engine, int64_t every_us, Ending* ending);

  // The take has begun.
  void Begin();
  // Audio was appended.
  void OnAppend();

  const FlushFigures& figures() const { return figures_; }

 private:
  void Arm();
  void Flush();
  void OnFlushed(FlMethodResponse* response);

  Engine* const engine_;
  const int64_t every_us_;
  Ending* const ending_;
  std::optional<LoopEvent> due_;
  int64_t last_start_us_ = 0;
  bool has_new_audio_ = false;
  bool is_flushing_ = false;
  FlushFigures figures_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_FLUSH_CLOCK_H_
