#include "small_messenger.h"

#include <utility>

namespace {

struct SmallMessenger {
  GObject parent_instance;
  MessengerState* state;
};

struct SmallMessengerClass {
  GObjectClass parent_class;
};

struct SmallHandle {
  FlBinaryMessengerResponseHandle parent_instance;
  FlBinaryMessenger* messenger;
  int number;
  bool answered;
};

struct SmallHandleClass {
  FlBinaryMessengerResponseHandleClass parent_class;
};

void small_messenger_iface_init(FlBinaryMessengerInterface* iface);

G_DEFINE_TYPE_WITH_CODE(SmallMessenger, small_messenger, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(fl_binary_messenger_get_type(),
                                              small_messenger_iface_init))
G_DEFINE_TYPE(SmallHandle, small_handle,
              fl_binary_messenger_response_handle_get_type())

Message to_message(GBytes* bytes) {
  return bytes != nullptr ? Message(to_octets(bytes)) : std::nullopt;
}

void set_message_handler(FlBinaryMessenger* messenger, const gchar* channel,
                         FlBinaryMessengerMessageHandler handler,
                         gpointer user_data, GDestroyNotify destroy_notify) {
  MessengerState& state = state_of(messenger);
  if (state.shut_down) {
    if (handler == nullptr) return;
    g_warning("set a handler on %s after shutdown", channel);
    if (destroy_notify != nullptr) destroy_notify(user_data);
    return;
  }
  auto former = state.table.extract(channel);
  if (handler != nullptr) {
    state.table[channel] = {handler, user_data, destroy_notify};
  }
  if (!former.empty() && former.mapped().destroy_notify != nullptr) {
    former.mapped().destroy_notify(former.mapped().user_data);
  }
}

gboolean send_response(FlBinaryMessenger* messenger,
                       FlBinaryMessengerResponseHandle* response_handle,
                       GBytes* response, GError** error) {
  MessengerState& state = state_of(messenger);
  auto* handle = reinterpret_cast<SmallHandle*>(response_handle);
  if (state.shut_down) return TRUE;
  if (handle->answered) {
    g_critical("message %d was answered before", handle->number);
    return FALSE;
  }
  if (state.response_failure != MessengerState::Failure::kNone) {
    if (state.response_failure == MessengerState::Failure::kError) {
      g_set_error(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "no way back");
    }
    return FALSE;
  }
  handle->answered = true;
  state.answers[handle->number] = to_message(response);
  return TRUE;
}

void send_on_channel(FlBinaryMessenger* messenger, const gchar* channel,
                     GBytes* message, GCancellable* cancellable,
                     GAsyncReadyCallback callback, gpointer user_data) {
  MessengerState& state = state_of(messenger);
  if (state.shut_down) return;
  state.sent.push_back({channel, to_message(message), callback != nullptr});
  if (callback == nullptr) return;
  g_autoptr(GTask) task =
      g_task_new(messenger, cancellable, callback, user_data);
  g_task_return_boolean(task, TRUE);
}

GBytes* send_on_channel_finish(FlBinaryMessenger* messenger,
                               GAsyncResult* result, GError** error) {
  MessengerState& state = state_of(messenger);
  if (!g_task_propagate_boolean(G_TASK(result), error)) return nullptr;
  if (state.send_failure == MessengerState::Failure::kSilent) return nullptr;
  if (state.send_failure == MessengerState::Failure::kError) {
    g_set_error(error, G_IO_ERROR, G_IO_ERROR_CLOSED, "no way there");
    return nullptr;
  }
  return to_bytes(state.reply).release();
}

void resize_channel(FlBinaryMessenger* messenger, const gchar* channel,
                    int64_t new_size) {
  state_of(messenger).settings.push_back(std::string("resize ") + channel +
                                         " " + std::to_string(new_size));
}

void set_warns_on_channel_overflow(FlBinaryMessenger* messenger,
                                   const gchar* channel, bool warns) {
  state_of(messenger).settings.push_back(std::string("warns ") + channel +
                                         (warns ? " yes" : " no"));
}

void shutdown(FlBinaryMessenger* messenger) {
  MessengerState& state = state_of(messenger);
  state.shut_down = true;
  for (const auto& [channel, gone] : std::exchange(state.table, {})) {
    if (gone.destroy_notify != nullptr) gone.destroy_notify(gone.user_data);
  }
}

void small_messenger_iface_init(FlBinaryMessengerInterface* iface) {
  iface->set_message_handler_on_channel = set_message_handler;
  iface->send_response = send_response;
  iface->send_on_channel = send_on_channel;
  iface->send_on_channel_finish = send_on_channel_finish;
  iface->resize_channel = resize_channel;
  iface->set_warns_on_channel_overflow = set_warns_on_channel_overflow;
  iface->shutdown = shutdown;
}

void small_messenger_finalize(GObject* object) {
  delete reinterpret_cast<SmallMessenger*>(object)->state;
  G_OBJECT_CLASS(small_messenger_parent_class)->finalize(object);
}

void small_messenger_class_init(SmallMessengerClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = small_messenger_finalize;
}

void small_messenger_init(SmallMessenger* messenger) {
  messenger->state = new MessengerState();
}

void small_handle_dispose(GObject* object) {
  auto* handle = reinterpret_cast<SmallHandle*>(object);
  if (handle->messenger != nullptr && !handle->answered &&
      !state_of(handle->messenger).shut_down) {
    g_critical("message %d was never answered", handle->number);
  }
  g_clear_object(&handle->messenger);
  G_OBJECT_CLASS(small_handle_parent_class)->dispose(object);
}

void small_handle_class_init(SmallHandleClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = small_handle_dispose;
}

void small_handle_init(SmallHandle*) {}

}  // namespace

FlBinaryMessenger* small_messenger_new() {
  return FL_BINARY_MESSENGER(g_object_new(small_messenger_get_type(), nullptr));
}

MessengerState& state_of(FlBinaryMessenger* messenger) {
  return *reinterpret_cast<SmallMessenger*>(messenger)->state;
}

int deliver(FlBinaryMessenger* messenger, const std::string& channel,
            const Octets& message) {
  MessengerState& state = state_of(messenger);
  const int number = ++state.delivered;
  const auto found = state.table.find(channel);
  if (found == state.table.end()) {
    state.answers[number] = std::nullopt;
    return number;
  }
  Owned<SmallHandle> handle(static_cast<SmallHandle*>(
      g_object_new(small_handle_get_type(), nullptr)));
  handle->messenger = FL_BINARY_MESSENGER(g_object_ref(messenger));
  handle->number = number;
  // A copy: the handler may take itself off the table.
  const MessengerState::Registration registration = found->second;
  registration.handler(messenger, channel.c_str(), to_bytes(message).get(),
                       FL_BINARY_MESSENGER_RESPONSE_HANDLE(handle.get()),
                       registration.user_data);
  return number;
}

void shut_down(FlBinaryMessenger* messenger) {
  FL_BINARY_MESSENGER_GET_IFACE(messenger)->shutdown(messenger);
}
