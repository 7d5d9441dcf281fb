#ifndef CORVANE_CORVANE_PLUGIN_H_
#define CORVANE_CORVANE_PLUGIN_H_

#include <flutter_linux/flutter_linux.h>

// FLUTTER_PLUGIN_IMPL is defined while the plugin itself is compiled; without
// it, as in an application's generated registrant, the macro is empty.
#ifdef FLUTTER_PLUGIN_IMPL
#define FLUTTER_PLUGIN_EXPORT __attribute__((visibility("default")))
#else
#define FLUTTER_PLUGIN_EXPORT
#endif

G_BEGIN_DECLS

// Crash-safe audio capture for Flutter on Linux: a plain GObject without
// properties, signals or interfaces. It owns one worker thread, which does all
// file and codec work, and at most one open capture.
typedef struct _CorvanePlugin CorvanePlugin;

typedef struct {
  GObjectClass parent_class;
} CorvanePluginClass;

// Returns the GType "CorvanePlugin", registering it on the first call. May be
// called from any thread.
FLUTTER_PLUGIN_EXPORT GType corvane_plugin_get_type(void);

// Creates the plugin and opens its two channels on the messenger of
// `registrar`: the method channel "com.velka.corvane" and the event channel
// "com.velka.corvane/log", both with the standard method codec.
//
// Call it once, on the thread that owns the default main context; replies and
// log events are delivered there, so that thread must hold the context for as
// long as the plugin lives (GLib would otherwise run them on the worker).
//
// `registrar` is borrowed and not needed afterwards. The method channel keeps
// the plugin alive: it is disposed when the messenger drops that channel, which
// finishes every queued call and closes an open capture, and may therefore
// block on the disk. Running out of memory or threads ends the process.
FLUTTER_PLUGIN_EXPORT void corvane_plugin_register_with_registrar(
    FlPluginRegistrar* registrar);

G_END_DECLS

#endif  // CORVANE_CORVANE_PLUGIN_H_
