// What the thread sanitizer has to be told of a GLib that was built without it.
// GLib's locks are futexes of its own, which the sanitizer doesn't see; so it
// takes whatever goes from the worker to the main thread through the main
// context for a race. Here each callback gets the one order that the context
// promises: what its poster did before posting came before it. Nothing is told
// of anything else, so that a record touched behind its posting, or a field
// that both sides use, is still a race; race.cc is the proof.
#include <dlfcn.h>
#include <glib.h>
#include <sanitizer/tsan_interface.h>

#include <memory>

namespace {

struct HandOver {
  GSourceFunc function;
  gpointer data;
  GDestroyNotify destroy;
};

gboolean Arrive(gpointer data) {
  auto* handed = static_cast<HandOver*>(data);
  __tsan_acquire(handed);
  return handed->function(handed->data);
}

// Runs on the thread that dispatched, behind the last call of Arrive().
void Forget(gpointer data) {
  const std::unique_ptr<HandOver> handed(static_cast<HandOver*>(data));
  __tsan_acquire(handed.get());
  if (handed->destroy != nullptr) handed->destroy(handed->data);
}

}  // namespace

// The one suppression. GLib allocates an event source on the thread that posts
// and frees it on the thread that dispatches, under its own locks. It makes the
// sanitizer overlook what GLib's own code does through the C library (malloc,
// free, memcpy); what is called by GLib, our callbacks, is looked at like the
// rest. What that hides: an early g_free().
extern "C" __attribute__((visibility("default"))) const char*
__tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so.0\n";
}

// In the program, ahead of GLib's own.
extern "C" __attribute__((visibility("default"))) void
g_main_context_invoke_full(GMainContext* context, gint priority,
                           GSourceFunc function, gpointer data,
                           GDestroyNotify destroy) {
  static const auto real =
      reinterpret_cast<decltype(&g_main_context_invoke_full)>(
          dlsym(RTLD_NEXT, "g_main_context_invoke_full"));
  auto* handed = new HandOver{function, data, destroy};
  __tsan_release(handed);
  real(context, priority, Arrive, handed, Forget);
}
