// Event channels. Requests arrive as method calls, events leave as the
// envelopes of answers; whether anybody listens is left to the application.
#include <flutter_linux/flutter_linux.h>

#include "as_real.h"
#include "fl_method_codec_private.h"

struct _FlEventChannel {
  GObject parent_instance;

  FlBinaryMessenger* messenger;
  gchar* name;
  FlMethodCodec* codec;

  FlEventChannelHandler listen_handler;
  FlEventChannelHandler cancel_handler;
  gpointer handlers_data;
  GDestroyNotify handlers_destroy_notify;
};

G_DEFINE_TYPE(FlEventChannel, fl_event_channel, G_TYPE_OBJECT)

// The notify runs last: it may come back to the channel.
static void replace_handlers(FlEventChannel* channel,
                             FlEventChannelHandler listen_handler,
                             FlEventChannelHandler cancel_handler,
                             gpointer data, GDestroyNotify destroy_notify) {
  const gpointer old_data = channel->handlers_data;
  const GDestroyNotify old_destroy_notify = channel->handlers_destroy_notify;
  channel->listen_handler = listen_handler;
  channel->cancel_handler = cancel_handler;
  channel->handlers_data = data;
  channel->handlers_destroy_notify = destroy_notify;
  if (old_destroy_notify != nullptr) old_destroy_notify(old_data);
}

// Answers with a response (NULL as "not implemented").
static void respond(FlEventChannel* channel,
                    FlBinaryMessengerResponseHandle* response_handle,
                    GBytes* bytes) {
  g_autoptr(GError) error = nullptr;
  if (fl_binary_messenger_send_response(channel->messenger, response_handle,
                                        bytes, &error)) {
    return;
  }
  g_assert(!embedding::kAsReal || error != nullptr);
  g_warning("Failed to answer on event channel \"%s\": %s", channel->name,
            error != nullptr ? error->message : "no reason was given");
}

// What a request is answered with; transfer full.
static FlMethodResponse* handle_request(FlEventChannel* channel,
                                        const gchar* method, FlValue* args) {
  FlEventChannelHandler handler = nullptr;
  if (g_str_equal(method, "listen")) {
    handler = channel->listen_handler;
  } else if (g_str_equal(method, "cancel")) {
    handler = channel->cancel_handler;
  } else {
    g_autofree gchar* text =
        g_strdup_printf("An event channel has no request \"%s\"", method);
    return FL_METHOD_RESPONSE(
        fl_method_error_response_new("error", text, nullptr));
  }
  // Without a handler there is nobody to object.
  FlMethodErrorResponse* failure =
      handler != nullptr ? handler(channel, args, channel->handlers_data)
                         : nullptr;
  return failure != nullptr
             ? FL_METHOD_RESPONSE(failure)
             : FL_METHOD_RESPONSE(fl_method_success_response_new(nullptr));
}

// The messenger's message handler.
static void message_cb(FlBinaryMessenger*, const gchar*, GBytes* message,
                       FlBinaryMessengerResponseHandle* response_handle,
                       gpointer user_data) {
  // Nothing holds the channel meanwhile: a handler that takes it off the
  // messenger is as fatal as with the real library.
  FlEventChannel* channel = FL_EVENT_CHANNEL(user_data);
  g_autofree gchar* method = nullptr;
  g_autoptr(FlValue) args = nullptr;
  g_autoptr(GBytes) bytes = nullptr;
  g_autoptr(GError) error = nullptr;
  if (!FL_METHOD_CODEC_GET_CLASS(channel->codec)
           ->decode_method_call(channel->codec, message, &method, &args,
                                &error)) {
    g_warning("Failed to decode a request on event channel \"%s\": %s",
              channel->name, error->message);
    // Unlike a method channel it answers: somebody waits for the listening.
    respond(channel, response_handle, nullptr);
    return;
  }
  g_autoptr(FlMethodResponse) response = handle_request(channel, method, args);
  if (!embedding::encode_response(channel->codec, response, &bytes, &error)) {
    g_warning("Failed to encode an answer on event channel \"%s\": %s",
              channel->name, error->message);
  }
  respond(channel, response_handle, bytes);
}

// The messenger's destroy notify: `user_data` is the reference it held.
static void closed_cb(gpointer user_data) {
  // Released last: the handlers' destroy notify still finds a channel.
  g_autoptr(FlEventChannel) channel = FL_EVENT_CHANNEL(user_data);
  replace_handlers(channel, nullptr, nullptr, nullptr, nullptr);
}

// Handlers that were set after the messenger had dropped the channel go here.
static void fl_event_channel_dispose(GObject* object) {
  FlEventChannel* channel = FL_EVENT_CHANNEL(object);
  replace_handlers(channel, nullptr, nullptr, nullptr, nullptr);
  g_clear_object(&channel->messenger);
  g_clear_pointer(&channel->name, g_free);
  g_clear_object(&channel->codec);
  G_OBJECT_CLASS(fl_event_channel_parent_class)->dispose(object);
}

static void fl_event_channel_class_init(FlEventChannelClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_event_channel_dispose;
}

static void fl_event_channel_init(FlEventChannel*) {}

FlEventChannel* fl_event_channel_new(FlBinaryMessenger* messenger,
                                     const gchar* name, FlMethodCodec* codec) {
  g_return_val_if_fail(FL_IS_BINARY_MESSENGER(messenger), nullptr);
  g_return_val_if_fail(name != nullptr, nullptr);
  g_return_val_if_fail(FL_IS_METHOD_CODEC(codec), nullptr);
  auto* channel =
      FL_EVENT_CHANNEL(g_object_new(fl_event_channel_get_type(), nullptr));
  channel->messenger = FL_BINARY_MESSENGER(g_object_ref(messenger));
  channel->name = g_strdup(name);
  channel->codec = FL_METHOD_CODEC(g_object_ref(codec));
  fl_binary_messenger_set_message_handler_on_channel(
      messenger, name, message_cb, g_object_ref(channel), closed_cb);
  return channel;
}

void fl_event_channel_set_stream_handlers(FlEventChannel* channel,
                                          FlEventChannelHandler listen_handler,
                                          FlEventChannelHandler cancel_handler,
                                          gpointer user_data,
                                          GDestroyNotify destroy_notify) {
  g_return_if_fail(FL_IS_EVENT_CHANNEL(channel));
  replace_handlers(channel, listen_handler, cancel_handler, user_data,
                   destroy_notify);
}

// Sends an event's bytes, if there are any, without waiting for an answer.
static gboolean send_event(FlEventChannel* channel, GBytes* bytes,
                           GCancellable* cancellable) {
  if (bytes == nullptr) return FALSE;  // The encoder has set the error.
  fl_binary_messenger_send_on_channel(channel->messenger, channel->name, bytes,
                                      cancellable, nullptr, nullptr);
  return TRUE;
}

gboolean fl_event_channel_send(FlEventChannel* channel, FlValue* event,
                               GCancellable* cancellable, GError** error) {
  g_return_val_if_fail(FL_IS_EVENT_CHANNEL(channel), FALSE);
  g_return_val_if_fail(event != nullptr, FALSE);
  g_autoptr(GBytes) bytes =
      FL_METHOD_CODEC_GET_CLASS(channel->codec)
          ->encode_success_envelope(channel->codec, event, error);
  return send_event(channel, bytes, cancellable);
}

gboolean fl_event_channel_send_error(FlEventChannel* channel, const gchar* code,
                                     const gchar* message, FlValue* details,
                                     GCancellable* cancellable,
                                     GError** error) {
  g_return_val_if_fail(FL_IS_EVENT_CHANNEL(channel), FALSE);
  g_return_val_if_fail(code != nullptr, FALSE);
  g_return_val_if_fail(message != nullptr, FALSE);
  g_autoptr(GBytes) bytes =
      FL_METHOD_CODEC_GET_CLASS(channel->codec)
          ->encode_error_envelope(channel->codec, code, message, details,
                                  error);
  return send_event(channel, bytes, cancellable);
}

gboolean fl_event_channel_send_end_of_stream(FlEventChannel* channel,
                                             GCancellable* cancellable,
                                             GError**) {
  g_return_val_if_fail(FL_IS_EVENT_CHANNEL(channel), FALSE);
  fl_binary_messenger_send_on_channel(channel->messenger, channel->name,
                                      nullptr, cancellable, nullptr, nullptr);
  return TRUE;
}
