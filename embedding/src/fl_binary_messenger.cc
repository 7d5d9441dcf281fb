// The messenger's interface. Who implements it is the host's business; here
// are only the types and the wrappers.
#include <flutter_linux/flutter_linux.h>

G_DEFINE_QUARK(fl_binary_messenger_codec_error_quark,
               fl_binary_messenger_codec_error)

G_DEFINE_INTERFACE(FlBinaryMessenger, fl_binary_messenger, G_TYPE_OBJECT)

G_DEFINE_TYPE(FlBinaryMessengerResponseHandle,
              fl_binary_messenger_response_handle, G_TYPE_OBJECT)

static void fl_binary_messenger_default_init(FlBinaryMessengerInterface*) {}

static void fl_binary_messenger_response_handle_class_init(
    FlBinaryMessengerResponseHandleClass*) {}

static void fl_binary_messenger_response_handle_init(
    FlBinaryMessengerResponseHandle*) {}

void fl_binary_messenger_set_message_handler_on_channel(
    FlBinaryMessenger* messenger, const gchar* channel,
    FlBinaryMessengerMessageHandler handler, gpointer user_data,
    GDestroyNotify destroy_notify) {
  g_return_if_fail(FL_IS_BINARY_MESSENGER(messenger));
  g_return_if_fail(channel != nullptr);
  FL_BINARY_MESSENGER_GET_IFACE(messenger)->set_message_handler_on_channel(
      messenger, channel, handler, user_data, destroy_notify);
}

gboolean fl_binary_messenger_send_response(
    FlBinaryMessenger* messenger,
    FlBinaryMessengerResponseHandle* response_handle, GBytes* response,
    GError** error) {
  g_return_val_if_fail(FL_IS_BINARY_MESSENGER(messenger), FALSE);
  g_return_val_if_fail(FL_IS_BINARY_MESSENGER_RESPONSE_HANDLE(response_handle),
                       FALSE);
  return FL_BINARY_MESSENGER_GET_IFACE(messenger)->send_response(
      messenger, response_handle, response, error);
}

void fl_binary_messenger_send_on_channel(FlBinaryMessenger* messenger,
                                         const gchar* channel, GBytes* message,
                                         GCancellable* cancellable,
                                         GAsyncReadyCallback callback,
                                         gpointer user_data) {
  g_return_if_fail(FL_IS_BINARY_MESSENGER(messenger));
  g_return_if_fail(channel != nullptr);
  FL_BINARY_MESSENGER_GET_IFACE(messenger)->send_on_channel(
      messenger, channel, message, cancellable, callback, user_data);
}

GBytes* fl_binary_messenger_send_on_channel_finish(FlBinaryMessenger* messenger,
                                                   GAsyncResult* result,
                                                   GError** error) {
  g_return_val_if_fail(FL_IS_BINARY_MESSENGER(messenger), nullptr);
  return FL_BINARY_MESSENGER_GET_IFACE(messenger)->send_on_channel_finish(
      messenger, result, error);
}

void fl_binary_messenger_resize_channel(FlBinaryMessenger* messenger,
                                        const gchar* channel,
                                        int64_t new_size) {
  g_return_if_fail(FL_IS_BINARY_MESSENGER(messenger));
  g_return_if_fail(channel != nullptr);
  FL_BINARY_MESSENGER_GET_IFACE(messenger)->resize_channel(messenger, channel,
                                                           new_size);
}

void fl_binary_messenger_set_warns_on_channel_overflow(
    FlBinaryMessenger* messenger, const gchar* channel, bool warns) {
  g_return_if_fail(FL_IS_BINARY_MESSENGER(messenger));
  g_return_if_fail(channel != nullptr);
  FL_BINARY_MESSENGER_GET_IFACE(messenger)->set_warns_on_channel_overflow(
      messenger, channel, warns);
}
