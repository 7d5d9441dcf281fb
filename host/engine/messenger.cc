#include "engine/messenger.h"

#include <atomic>
#include <map>
#include <string>
#include <utility>

namespace corvane {
namespace {

// What the table holds for a channel; runs the destroy notify when it goes.
class Handler {
 public:
  Handler(FlBinaryMessengerMessageHandler function, gpointer user_data,
          GDestroyNotify destroy)
      : function_(function), user_data_(user_data), destroy_(destroy) {}
  Handler(Handler&& other) noexcept
      : function_(other.function_),
        user_data_(other.user_data_),
        destroy_(std::exchange(other.destroy_, nullptr)) {}
  Handler& operator=(Handler&&) = delete;
  ~Handler() {
    if (destroy_ != nullptr) destroy_(user_data_);
  }

  FlBinaryMessengerMessageHandler function() const { return function_; }
  gpointer user_data() const { return user_data_; }

 private:
  FlBinaryMessengerMessageHandler function_;
  gpointer user_data_;
  GDestroyNotify destroy_;
};

using HandlerTable = std::map<std::string, Handler, std::less<>>;

struct MessengerState {
  HandlerTable handlers;
  OutgoingHandler on_outgoing;
  // Read by whoever answers, from any thread.
  std::atomic<bool> shut_down{false};
};

struct ResponseState {
  ReplyHandler on_reply;
  std::atomic<bool> answered{false};
};

}  // namespace
}  // namespace corvane

// GObject's macros name types and functions at the top level.
struct _CorvaneHostMessenger {
  GObject parent_instance;
  corvane::MessengerState* state;
};

struct _CorvaneHostResponse {
  FlBinaryMessengerResponseHandle parent_instance;
  _CorvaneHostMessenger* messenger;
  corvane::ResponseState* state;
};

G_DECLARE_FINAL_TYPE(CorvaneHostMessenger, corvane_host_messenger, CORVANE_HOST,
                     MESSENGER, GObject)
G_DECLARE_FINAL_TYPE(CorvaneHostResponse, corvane_host_response, CORVANE_HOST,
                     RESPONSE, FlBinaryMessengerResponseHandle)
static void messenger_iface_init(FlBinaryMessengerInterface* iface);

G_DEFINE_TYPE_WITH_CODE(CorvaneHostMessenger, corvane_host_messenger,
                        G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(fl_binary_messenger_get_type(),
                                              messenger_iface_init))
G_DEFINE_TYPE(CorvaneHostResponse, corvane_host_response,
              fl_binary_messenger_response_handle_get_type())
// The handle of one incoming message.

static void corvane_host_response_dispose(GObject* object) {
  auto* self = CORVANE_HOST_RESPONSE(object);
  // Whoever drops a handle unanswered leaves the other side waiting for good.
  if (self->messenger != nullptr && !self->state->answered &&
      !self->messenger->state->shut_down) {
    g_critical("a platform message was dropped without an answer");
  }
  g_clear_object(&self->messenger);
  G_OBJECT_CLASS(corvane_host_response_parent_class)->dispose(object);
}

static void corvane_host_response_finalize(GObject* object) {
  delete CORVANE_HOST_RESPONSE(object)->state;
  G_OBJECT_CLASS(corvane_host_response_parent_class)->finalize(object);
}

static void corvane_host_response_class_init(CorvaneHostResponseClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = corvane_host_response_dispose;
  G_OBJECT_CLASS(klass)->finalize = corvane_host_response_finalize;
}

static void corvane_host_response_init(CorvaneHostResponse* self) {
  self->state = new corvane::ResponseState;
}

// The messenger's slots.

static void set_message_handler(FlBinaryMessenger* messenger,
                                const gchar* channel,
                                FlBinaryMessengerMessageHandler function,
                                gpointer user_data, GDestroyNotify destroy) {
  corvane::MessengerState* state = CORVANE_HOST_MESSENGER(messenger)->state;
  corvane::Handler handler(function, user_data,
                           function != nullptr ? destroy : nullptr);
  if (state->shut_down) {
    if (function != nullptr) {
      g_warning("no handler can be set on %s: the messenger is shut down",
                channel);
    }
    return;
  }
  // The old entry leaves the table before its notify runs, and that may come
  // back here.
  auto old = state->handlers.extract(channel);
  if (function != nullptr) {
    state->handlers.emplace(channel, std::move(handler));
  }
}

static gboolean send_response(FlBinaryMessenger* messenger,
                              FlBinaryMessengerResponseHandle* handle,
                              GBytes* response, GError** error) {
  if (CORVANE_HOST_MESSENGER(messenger)->state->shut_down) return TRUE;
  corvane::ResponseState* state = CORVANE_HOST_RESPONSE(handle)->state;
  if (state->answered.exchange(true)) {
    g_critical("a platform message was answered twice");
    g_set_error_literal(error, FL_BINARY_MESSENGER_ERROR,
                        FL_BINARY_MESSENGER_ERROR_ALREADY_RESPONDED,
                        "the message has been answered already");
    return FALSE;
  }
  if (state->on_reply) state->on_reply(response);
  return TRUE;
}

static void send_on_channel(FlBinaryMessenger* messenger, const gchar* channel,
                            GBytes* message, GCancellable* cancellable,
                            GAsyncReadyCallback callback, gpointer user_data) {
  corvane::MessengerState* state = CORVANE_HOST_MESSENGER(messenger)->state;
  if (!state->shut_down && state->on_outgoing) {
    state->on_outgoing(channel, message);
  }
  if (callback == nullptr) return;
  // Nobody answers on the Dart side of this host: that is an empty response.
  g_autoptr(GTask) task =
      g_task_new(messenger, cancellable, callback, user_data);
  g_task_return_pointer(task, g_bytes_new(nullptr, 0),
                        reinterpret_cast<GDestroyNotify>(g_bytes_unref));
}

static GBytes* send_on_channel_finish(FlBinaryMessenger*, GAsyncResult* result,
                                      GError** error) {
  return static_cast<GBytes*>(g_task_propagate_pointer(G_TASK(result), error));
}

// Messages are handed over as they come, so no channel has a buffer to size.
static void resize_channel(FlBinaryMessenger*, const gchar*, int64_t) {}
static void set_warns_on_channel_overflow(FlBinaryMessenger*, const gchar*,
                                          bool) {}

static void messenger_iface_init(FlBinaryMessengerInterface* iface) {
  iface->set_message_handler_on_channel = set_message_handler;
  iface->send_response = send_response;
  iface->send_on_channel = send_on_channel;
  iface->send_on_channel_finish = send_on_channel_finish;
  iface->resize_channel = resize_channel;
  iface->set_warns_on_channel_overflow = set_warns_on_channel_overflow;
  iface->shutdown = corvane::messenger_shutdown;
}

static void corvane_host_messenger_finalize(GObject* object) {
  corvane::messenger_shutdown(FL_BINARY_MESSENGER(object));
  delete CORVANE_HOST_MESSENGER(object)->state;
  G_OBJECT_CLASS(corvane_host_messenger_parent_class)->finalize(object);
}

static void corvane_host_messenger_class_init(
    CorvaneHostMessengerClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = corvane_host_messenger_finalize;
}

static void corvane_host_messenger_init(CorvaneHostMessenger* self) {
  self->state = new corvane::MessengerState;
}

namespace corvane {

FlBinaryMessenger* messenger_new() {
  return FL_BINARY_MESSENGER(
      g_object_new(corvane_host_messenger_get_type(), nullptr));
}

void messenger_deliver(FlBinaryMessenger* messenger, const char* channel,
                       GBytes* message, ReplyHandler on_reply) {
  CorvaneHostMessenger* self = CORVANE_HOST_MESSENGER(messenger);
  const auto found = self->state->handlers.find(channel);
  if (found == self->state->handlers.end()) {
    if (on_reply) on_reply(nullptr);
    return;
  }
  g_autoptr(GBytes) bytes =
      message != nullptr ? g_bytes_ref(message) : g_bytes_new(nullptr, 0);
  g_autoptr(CorvaneHostResponse) handle = CORVANE_HOST_RESPONSE(
      g_object_new(corvane_host_response_get_type(), nullptr));
  handle->messenger = CORVANE_HOST_MESSENGER(g_object_ref(messenger));
  handle->state->on_reply = std::move(on_reply);
  found->second.function()(messenger, channel, bytes,
                           FL_BINARY_MESSENGER_RESPONSE_HANDLE(handle),
                           found->second.user_data());
}

void messenger_set_outgoing(FlBinaryMessenger* messenger,
                            OutgoingHandler on_outgoing) {
  CORVANE_HOST_MESSENGER(messenger)->state->on_outgoing =
      std::move(on_outgoing);
}

void messenger_shutdown(FlBinaryMessenger* messenger) {
  MessengerState* state = CORVANE_HOST_MESSENGER(messenger)->state;
  state->shut_down = true;
  // A notify may drop the last reference on a plugin, and its dispose calls
  // back into the messenger: by then the table is out of reach.
  HandlerTable detached = std::move(state->handlers);
  state->handlers.clear();
}

}  // namespace corvane
