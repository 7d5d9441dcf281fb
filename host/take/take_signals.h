// The signals that a take knows, as events of the main loop.
#ifndef CORVANE_HOST_TAKE_TAKE_SIGNALS_H_
#define CORVANE_HOST_TAKE_TAKE_SIGNALS_H_

#include <glib.h>

#include <array>
#include <csignal>
#include <functional>

namespace corvane {

// SIGINT, SIGTERM and SIGHUP end a take, SIGUSR1 pauses it and goes on, SIGUSR2
// marks a moment.
constexpr std::array<int, 5> kTakeSignals = {SIGINT, SIGTERM, SIGHUP, SIGUSR1,
                                             SIGUSR2};

// For as long as it lives; on the thread that runs the main context. One that
// the parent has told to ignore stays ignored, as under nohup(1) and in a
// shell's background; once this has gone all of them are, so that none keeps
// the result back.
class TakeSignals {
 public:
  explicit TakeSignals(std::function<void(int signal)> on_signal);
  ~TakeSignals();
  TakeSignals(const TakeSignals&) = delete;
  TakeSignals& operator=(const TakeSignals&) = delete;

 private:
  struct Watch {
    TakeSignals* owner = nullptr;
    int signal = 0;
    guint id = 0;  // of the event; 0 for none
  };

  static gboolean OnSignal(gpointer watch);

  const std::function<void(int signal)> on_signal_;
  std::array<Watch, kTakeSignals.size()> watches_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_TAKE_SIGNALS_H_
