// Events of the main loop as objects: each is taken off the loop again when it
// goes.
#ifndef CORVANE_HOST_ENGINE_LOOP_EVENT_H_
#define CORVANE_HOST_ENGINE_LOOP_EVENT_H_

#include <glib.h>

#include <cstdint>
#include <functional>
#include <utility>

namespace corvane {

// Belongs to the thread that runs the default main context. `run`, where one is
// given, may destroy the event that it runs for.
class LoopEvent {
 public:
  // Comes again and again, as long as `fd` (borrowed) can be read, has ended or
  // has failed.
  static LoopEvent WhileReadable(int fd, std::function<void()> run);
  // Comes once, when the monotonic clock (g_get_monotonic_time) says so. That
  // clock stands still while the machine is suspended.
  static LoopEvent At(int64_t monotonic_us, std::function<void()> run = {});
  // Comes again and again, `interval_ms` apart at least.
  static LoopEvent Every(guint interval_ms, std::function<void()> run);

  LoopEvent(LoopEvent&& other) noexcept
      : source_(std::exchange(other.source_, nullptr)) {}
  LoopEvent& operator=(LoopEvent&&) = delete;
  ~LoopEvent();

  // Whether an event that comes once has come.
  bool has_come() const { return g_source_is_destroyed(source_) != FALSE; }

 private:
  explicit LoopEvent(GSource* source);

  GSource* source_;  // NULL once moved away
};

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_LOOP_EVENT_H_
