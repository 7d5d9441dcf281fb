#ifndef CORVANE_FLUTTER_LINUX_FL_EVENT_CHANNEL_H_
#define CORVANE_FLUTTER_LINUX_FL_EVENT_CHANNEL_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_binary_messenger.h>
#include <flutter_linux/fl_method_codec.h>
#include <flutter_linux/fl_method_response.h>
#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/*
 * FlEventChannel: a stream of events towards Dart on one named channel. It
 * registers itself on the messenger, which keeps it alive until it drops the
 * channel. It does not track whether anybody listens.
 */
G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlEventChannel, fl_event_channel, FL, EVENT_CHANNEL,
                     GObject)

/* Called when Dart listens or cancels. `args` is borrowed. Returns NULL to
 * accept, or the error to answer with (transfer full). It must not take its
 * own channel off the messenger: nothing else keeps the channel alive. */
typedef FlMethodErrorResponse* (*FlEventChannelHandler)(FlEventChannel* channel,
                                                        FlValue* args,
                                                        gpointer user_data);

/* Transfer full; takes its own references on `messenger` and `codec`. */
G_MODULE_EXPORT
FlEventChannel* fl_event_channel_new(FlBinaryMessenger* messenger,
                                     const gchar* name, FlMethodCodec* codec);

/*
 * Replaces both handlers (either may be NULL: it accepts) and runs the former
 * ones' destroy notify. So does the messenger when it drops the channel; what
 * is set after that is kept until the channel is disposed.
 */
G_MODULE_EXPORT
void fl_event_channel_set_stream_handlers(FlEventChannel* channel,
                                          FlEventChannelHandler listen_handler,
                                          FlEventChannelHandler cancel_handler,
                                          gpointer user_data,
                                          GDestroyNotify destroy_notify);

/*
 * Send an event, an error or the end of the stream. FALSE with `error` set if
 * it can not be encoded; whether anybody receives it is not known. `details`
 * and `cancellable` may be NULL; `event`, `code` and `message` may not.
 */
G_MODULE_EXPORT
gboolean fl_event_channel_send(FlEventChannel* channel, FlValue* event,
                               GCancellable* cancellable, GError** error);
G_MODULE_EXPORT
gboolean fl_event_channel_send_error(FlEventChannel* channel, const gchar* code,
                                     const gchar* message, FlValue* details,
                                     GCancellable* cancellable, GError** error);
G_MODULE_EXPORT
gboolean fl_event_channel_send_end_of_stream(FlEventChannel* channel,
                                             GCancellable* cancellable,
                                             GError** error);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_EVENT_CHANNEL_H_ */
