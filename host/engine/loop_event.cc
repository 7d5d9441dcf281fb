#include "engine/loop_event.h"

#include <glib-unix.h>

namespace corvane {
namespace {

// Owned by the source, which keeps it while it runs.
using Callback = std::function<void()>;

void free_callback(gpointer callback) {
  delete static_cast<Callback*>(callback);
}

gboolean run_once(gpointer callback) {
  const auto& run = *static_cast<Callback*>(callback);
  if (run) run();
  return G_SOURCE_REMOVE;
}

gboolean run_again(gpointer callback) {
  (*static_cast<Callback*>(callback))();
  return G_SOURCE_CONTINUE;
}

gboolean while_readable(gint /*fd*/, GIOCondition /*condition*/,
                        gpointer callback) {
  return run_again(callback);
}

}  // namespace

LoopEvent LoopEvent::WhileReadable(int fd, std::function<void()> run) {
  GSource* source = g_unix_fd_source_new(
      fd, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL));
  g_source_set_callback(source, G_SOURCE_FUNC(while_readable),
                        new Callback(std::move(run)), free_callback);
  return LoopEvent(source);
}

LoopEvent LoopEvent::At(int64_t monotonic_us, std::function<void()> run) {
  GSource* source = g_timeout_source_new(0);
  g_source_set_ready_time(source, monotonic_us);
  g_source_set_callback(source, run_once, new Callback(std::move(run)),
                        free_callback);
  return LoopEvent(source);
}

LoopEvent LoopEvent::Every(guint interval_ms, std::function<void()> run) {
  GSource* source = g_timeout_source_new(interval_ms);
  g_source_set_callback(source, run_again, new Callback(std::move(run)),
                        free_callback);
  return LoopEvent(source);
}

LoopEvent::LoopEvent(GSource* source) : source_(source) {
  g_source_attach(source_, nullptr);
}

LoopEvent::~LoopEvent() {
  if (source_ == nullptr) return;
  g_source_destroy(source_);
  g_source_unref(source_);
}

}  // namespace corvane
