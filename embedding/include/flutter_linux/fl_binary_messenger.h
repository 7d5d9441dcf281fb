#ifndef CORVANE_FLUTTER_LINUX_FL_BINARY_MESSENGER_H_
#define CORVANE_FLUTTER_LINUX_FL_BINARY_MESSENGER_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>
#include <stdbool.h>
#include <stdint.h>

G_BEGIN_DECLS

#define FL_BINARY_MESSENGER_ERROR fl_binary_messenger_codec_error_quark()

/* For messengers of one's own: the engine's has a critical and no error for a
 * second answer. */
typedef enum {
  FL_BINARY_MESSENGER_ERROR_ALREADY_RESPONDED
} FlBinaryMessengerError;

G_MODULE_EXPORT
GQuark fl_binary_messenger_codec_error_quark(void) G_GNUC_CONST;

/*
 * FlBinaryMessenger: bytes on named channels, in both directions. The engine
 * implements it for applications; a host process may implement it itself.
 */
G_MODULE_EXPORT
G_DECLARE_INTERFACE(FlBinaryMessenger, fl_binary_messenger, FL,
                    BINARY_MESSENGER, GObject)

/* FlBinaryMessengerResponseHandle: the way back for one message. A messenger
 * subclasses it; handlers only pass it on. */
G_MODULE_EXPORT
G_DECLARE_DERIVABLE_TYPE(FlBinaryMessengerResponseHandle,
                         fl_binary_messenger_response_handle, FL,
                         BINARY_MESSENGER_RESPONSE_HANDLE, GObject)

struct _FlBinaryMessengerResponseHandleClass {
  GObjectClass parent_class;
};

/*
 * Gets each message of a channel. `message` is never NULL. The handler answers
 * with fl_binary_messenger_send_response(), now or, with its own reference on
 * `response_handle`, later. All arguments are borrowed.
 */
typedef void (*FlBinaryMessengerMessageHandler)(
    FlBinaryMessenger* messenger, const gchar* channel, GBytes* message,
    FlBinaryMessengerResponseHandle* response_handle, gpointer user_data);

/*
 * The order is part of the binary interface. An implementation that returns
 * FALSE from send_response or NULL from send_on_channel_finish sets `error`,
 * unless the failure is a mistake of the caller's that it logs as critical.
 */
struct _FlBinaryMessengerInterface {
  GTypeInterface parent_iface;

  void (*set_message_handler_on_channel)(
      FlBinaryMessenger* messenger, const gchar* channel,
      FlBinaryMessengerMessageHandler handler, gpointer user_data,
      GDestroyNotify destroy_notify);

  gboolean (*send_response)(FlBinaryMessenger* messenger,
                            FlBinaryMessengerResponseHandle* response_handle,
                            GBytes* response, GError** error);

  void (*send_on_channel)(FlBinaryMessenger* messenger, const gchar* channel,
                          GBytes* message, GCancellable* cancellable,
                          GAsyncReadyCallback callback, gpointer user_data);

  GBytes* (*send_on_channel_finish)(FlBinaryMessenger* messenger,
                                    GAsyncResult* result, GError** error);

  void (*resize_channel)(FlBinaryMessenger* messenger, const gchar* channel,
                         int64_t new_size);

  void (*set_warns_on_channel_overflow)(FlBinaryMessenger* messenger,
                                        const gchar* channel, bool warns);

  void (*shutdown)(FlBinaryMessenger* messenger);
};

/*
 * Replaces the handler of a channel and runs the former one's destroy notify.
 * A NULL handler removes it; a destroy notify given with it is ignored.
 */
G_MODULE_EXPORT
void fl_binary_messenger_set_message_handler_on_channel(
    FlBinaryMessenger* messenger, const gchar* channel,
    FlBinaryMessengerMessageHandler handler, gpointer user_data,
    GDestroyNotify destroy_notify);

/* Answers a message, once; works from any thread. Handle and bytes are
 * borrowed; no bytes, as NULL or as an empty GBytes, answer "not
 * implemented". */
G_MODULE_EXPORT
gboolean fl_binary_messenger_send_response(
    FlBinaryMessenger* messenger,
    FlBinaryMessengerResponseHandle* response_handle, GBytes* response,
    GError** error);

/* Sends towards Dart. `message`, `cancellable` and `callback` may be NULL. */
G_MODULE_EXPORT
void fl_binary_messenger_send_on_channel(FlBinaryMessenger* messenger,
                                         const gchar* channel, GBytes* message,
                                         GCancellable* cancellable,
                                         GAsyncReadyCallback callback,
                                         gpointer user_data);

/* Transfer full; NULL with `error` set on failure. */
G_MODULE_EXPORT
GBytes* fl_binary_messenger_send_on_channel_finish(FlBinaryMessenger* messenger,
                                                   GAsyncResult* result,
                                                   GError** error);

/* How many messages Dart's side of a channel holds while nobody listens. */
G_MODULE_EXPORT
void fl_binary_messenger_resize_channel(FlBinaryMessenger* messenger,
                                        const gchar* channel, int64_t new_size);

/* Whether Dart's side warns when such messages have to be dropped. */
G_MODULE_EXPORT
void fl_binary_messenger_set_warns_on_channel_overflow(
    FlBinaryMessenger* messenger, const gchar* channel, bool warns);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_BINARY_MESSENGER_H_ */
