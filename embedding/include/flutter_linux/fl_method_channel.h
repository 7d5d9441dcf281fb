#ifndef CORVANE_FLUTTER_LINUX_FL_METHOD_CHANNEL_H_
#define CORVANE_FLUTTER_LINUX_FL_METHOD_CHANNEL_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_binary_messenger.h>
#include <flutter_linux/fl_method_call.h>
#include <flutter_linux/fl_method_codec.h>
#include <flutter_linux/fl_method_response.h>
#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/*
 * FlMethodChannel: method calls on one named channel. It registers itself on
 * the messenger, which keeps it alive until it drops the channel; giving up
 * one's own references closes nothing.
 */
G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlMethodChannel, fl_method_channel, FL, METHOD_CHANNEL,
                     GObject)

/* Gets each call; it answers, or takes a reference on the call and answers
 * later. All arguments are borrowed. */
typedef void (*FlMethodChannelMethodCallHandler)(FlMethodChannel* channel,
                                                 FlMethodCall* method_call,
                                                 gpointer user_data);

/* Transfer full; takes its own references on `messenger` and `codec`. */
G_MODULE_EXPORT
FlMethodChannel* fl_method_channel_new(FlBinaryMessenger* messenger,
                                       const gchar* name, FlMethodCodec* codec);

/*
 * Replaces the handler (NULL removes it) and runs the former one's destroy
 * notify. On a channel that the messenger has dropped this warns and runs the
 * new `destroy_notify` at once.
 */
G_MODULE_EXPORT
void fl_method_channel_set_method_call_handler(
    FlMethodChannel* channel, FlMethodChannelMethodCallHandler handler,
    gpointer user_data, GDestroyNotify destroy_notify);

/* Calls a method on the Dart side. `args`, `cancellable` and `callback` may be
 * NULL; without a callback the answer is dropped. */
G_MODULE_EXPORT
void fl_method_channel_invoke_method(FlMethodChannel* channel,
                                     const gchar* method, FlValue* args,
                                     GCancellable* cancellable,
                                     GAsyncReadyCallback callback,
                                     gpointer user_data);

/* Transfer full; NULL with `error` set when the call could not be made or its
 * answer not be understood. A failing method is a response, not an error. */
G_MODULE_EXPORT
FlMethodResponse* fl_method_channel_invoke_method_finish(
    FlMethodChannel* channel, GAsyncResult* result, GError** error);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_METHOD_CHANNEL_H_ */
