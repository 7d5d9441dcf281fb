// Method channels. A channel is one of the messenger's handlers and lives by
// the reference that the messenger holds; it ends when that is given back.
#include "as_real.h"
#include "fl_method_channel_private.h"
#include "fl_method_codec_private.h"

struct _FlMethodChannel {
  GObject parent_instance;

  FlBinaryMessenger* messenger;
  gchar* name;
  FlMethodCodec* codec;

  // The messenger has dropped the channel: no call will arrive any more.
  gboolean closed;

  FlMethodChannelMethodCallHandler handler;
  gpointer handler_data;
  GDestroyNotify handler_destroy_notify;
};

G_DEFINE_TYPE(FlMethodChannel, fl_method_channel, G_TYPE_OBJECT)

// Puts a handler in the place of the present one. The notify runs last: it may
// come back to the channel, or hold the reference that keeps the caller alive.
static void replace_handler(FlMethodChannel* channel,
                            FlMethodChannelMethodCallHandler handler,
                            gpointer data, GDestroyNotify destroy_notify) {
  const gpointer old_data = channel->handler_data;
  const GDestroyNotify old_destroy_notify = channel->handler_destroy_notify;
  channel->handler = handler;
  channel->handler_data = data;
  channel->handler_destroy_notify = destroy_notify;
  if (old_destroy_notify != nullptr) old_destroy_notify(old_data);
}

// The messenger's message handler.
static void message_cb(FlBinaryMessenger*, const gchar*, GBytes* message,
                       FlBinaryMessengerResponseHandle* response_handle,
                       gpointer user_data) {
  FlMethodChannel* channel = FL_METHOD_CHANNEL(user_data);
  // No answer, not "not implemented": an application without a handler has
  // forgotten something, and the engine complains about the lost message.
  if (channel->handler == nullptr) return;

  g_autofree gchar* method = nullptr;
  g_autoptr(FlValue) args = nullptr;
  g_autoptr(GError) error = nullptr;
  if (!FL_METHOD_CODEC_GET_CLASS(channel->codec)
           ->decode_method_call(channel->codec, message, &method, &args,
                                &error)) {
    g_warning("Failed to decode a method call on channel \"%s\": %s",
              channel->name, error->message);
    return;
  }
  // The call holds a reference on the channel: the handler may close it.
  g_autoptr(FlMethodCall) call =
      embedding::new_method_call(method, args, channel, response_handle);
  channel->handler(channel, call, channel->handler_data);
}

// The messenger's destroy notify: `user_data` is the reference it held.
static void closed_cb(gpointer user_data) {
  // Released last: the handler's destroy notify still finds a channel.
  g_autoptr(FlMethodChannel) channel = FL_METHOD_CHANNEL(user_data);
  channel->closed = TRUE;
  replace_handler(channel, nullptr, nullptr, nullptr);
}

// By now the messenger has dropped the channel, so there is nothing to take
// back from it; its name may belong to another channel already.
static void fl_method_channel_dispose(GObject* object) {
  FlMethodChannel* channel = FL_METHOD_CHANNEL(object);
  replace_handler(channel, nullptr, nullptr, nullptr);
  g_clear_object(&channel->messenger);
  g_clear_pointer(&channel->name, g_free);
  g_clear_object(&channel->codec);
  G_OBJECT_CLASS(fl_method_channel_parent_class)->dispose(object);
}

static void fl_method_channel_class_init(FlMethodChannelClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_method_channel_dispose;
}

static void fl_method_channel_init(FlMethodChannel*) {}

namespace embedding {

gboolean send_method_response(FlMethodChannel* channel,
                              FlBinaryMessengerResponseHandle* response_handle,
                              FlMethodResponse* response, GError** error) {
  g_autoptr(GBytes) bytes = nullptr;
  return encode_response(channel->codec, response, &bytes, error) &&
         fl_binary_messenger_send_response(channel->messenger, response_handle,
                                           bytes, error);
}

}  // namespace embedding

FlMethodChannel* fl_method_channel_new(FlBinaryMessenger* messenger,
                                       const gchar* name,
                                       FlMethodCodec* codec) {
  g_return_val_if_fail(FL_IS_BINARY_MESSENGER(messenger), nullptr);
  g_return_val_if_fail(name != nullptr, nullptr);
  g_return_val_if_fail(FL_IS_METHOD_CODEC(codec), nullptr);
  auto* channel =
      FL_METHOD_CHANNEL(g_object_new(fl_method_channel_get_type(), nullptr));
  channel->messenger = FL_BINARY_MESSENGER(g_object_ref(messenger));
  channel->name = g_strdup(name);
  channel->codec = FL_METHOD_CODEC(g_object_ref(codec));
  fl_binary_messenger_set_message_handler_on_channel(
      messenger, name, message_cb, g_object_ref(channel), closed_cb);
  return channel;
}

void fl_method_channel_set_method_call_handler(
    FlMethodChannel* channel, FlMethodChannelMethodCallHandler handler,
    gpointer user_data, GDestroyNotify destroy_notify) {
  g_return_if_fail(FL_IS_METHOD_CHANNEL(channel));
  if (!channel->closed) {
    replace_handler(channel, handler, user_data, destroy_notify);
    return;
  }
  if (handler != nullptr) {
    g_warning("Method channel \"%s\" is closed and takes no handler",
              channel->name);
  }
  if (destroy_notify != nullptr) destroy_notify(user_data);
}

// Hands the messenger's result to whoever waits for the method's.
static void response_cb(GObject*, GAsyncResult* result, gpointer user_data) {
  g_autoptr(GTask) task = G_TASK(user_data);
  g_task_return_pointer(task, g_object_ref(result), g_object_unref);
}

void fl_method_channel_invoke_method(FlMethodChannel* channel,
                                     const gchar* method, FlValue* args,
                                     GCancellable* cancellable,
                                     GAsyncReadyCallback callback,
                                     gpointer user_data) {
  g_return_if_fail(FL_IS_METHOD_CHANNEL(channel));
  g_return_if_fail(method != nullptr);
  g_autoptr(GTask) task = callback != nullptr ? g_task_new(channel, cancellable,
                                                           callback, user_data)
                                              : nullptr;
  g_autoptr(GError) error = nullptr;
  g_autoptr(GBytes) message =
      FL_METHOD_CODEC_GET_CLASS(channel->codec)
          ->encode_method_call(channel->codec, method, args, &error);
  if (message == nullptr) {
    if (task != nullptr) g_task_return_error(task, g_steal_pointer(&error));
    return;
  }
  const GAsyncReadyCallback on_response =
      task != nullptr ? response_cb : nullptr;
  fl_binary_messenger_send_on_channel(channel->messenger, channel->name,
                                      message, cancellable, on_response,
                                      g_steal_pointer(&task));
}

FlMethodResponse* fl_method_channel_invoke_method_finish(
    FlMethodChannel* channel, GAsyncResult* result, GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CHANNEL(channel), nullptr);
  g_return_val_if_fail(g_task_is_valid(result, channel), nullptr);
  g_autoptr(GAsyncResult) sent = static_cast<GAsyncResult*>(
      g_task_propagate_pointer(G_TASK(result), error));
  if (sent == nullptr) return nullptr;
  // The bytes alone do not tell: none may also mean "not implemented".
  GError* failure = nullptr;
  g_autoptr(GBytes) response = fl_binary_messenger_send_on_channel_finish(
      channel->messenger, sent, &failure);
  if (failure != nullptr) {
    g_propagate_error(error, failure);
    return nullptr;
  }
  g_assert(!embedding::kAsReal || response != nullptr);
  return embedding::decode_response(channel->codec, response, error);
}
