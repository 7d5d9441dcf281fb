#include "take/take_signals.h"

#include <glib-unix.h>
#include <pthread.h>

#include <utility>

namespace corvane {
namespace {

bool is_ignored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 &&
         action.sa_handler == SIG_IGN;
}

}  // namespace

TakeSignals::TakeSignals(std::function<void(int signal)> on_signal)
    : on_signal_(std::move(on_signal)) {
  for (size_t i = 0; i < kTakeSignals.size(); ++i) {
    Watch& watch = watches_[i];
    watch = {this, kTakeSignals[i], 0};
    if (is_ignored(watch.signal)) continue;
    watch.id = g_unix_signal_add(watch.signal, OnSignal, &watch);
  }
}

// Blocked meanwhile: between an event's end and the new disposition the old one
// would end the program.
TakeSignals::~TakeSignals() {
  sigset_t all = {};
  sigset_t before = {};
  sigemptyset(&all);
  for (const int signal : kTakeSignals) sigaddset(&all, signal);
  pthread_sigmask(SIG_BLOCK, &all, &before);
  for (const Watch& watch : watches_) {
    if (watch.id != 0) g_source_remove(watch.id);
  }
  for (const int signal : kTakeSignals) std::signal(signal, SIG_IGN);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

gboolean TakeSignals::OnSignal(gpointer watch) {
  const auto& self = *static_cast<Watch*>(watch);
  self.owner->on_signal_(self.signal);
  return G_SOURCE_CONTINUE;
}

}  // namespace corvane
