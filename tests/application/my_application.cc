#include "my_application.h"

#include <map>
#include <string>

namespace {

struct Handler {
  FlBinaryMessengerMessageHandler function;
  gpointer user_data;
  GDestroyNotify destroy_notify;
};

using HandlerTable = std::map<std::string, Handler>;

// What the answer to one message is waited for with.
struct Answer {
  FlBinaryMessengerResponseHandle parent_instance;
  bool arrived;
  GBytes* bytes;  // owned
};

struct AnswerClass {
  FlBinaryMessengerResponseHandleClass parent_class;
};

G_DEFINE_TYPE(Answer, answer, fl_binary_messenger_response_handle_get_type())

void answer_finalize(GObject* object) {
  g_clear_pointer(&reinterpret_cast<Answer*>(object)->bytes, g_bytes_unref);
  G_OBJECT_CLASS(answer_parent_class)->finalize(object);
}

void answer_class_init(AnswerClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = answer_finalize;
}

void answer_init(Answer* /*self*/) {}

}  // namespace

struct _MyApplication {
  GObject parent_instance;

  FlMethodCodec* codec;
  HandlerTable* handlers;
  int events;
};

static void registry_init(FlPluginRegistryInterface* iface);
static void registrar_init(FlPluginRegistrarInterface* iface);
static void messenger_init(FlBinaryMessengerInterface* iface);

G_DEFINE_TYPE_WITH_CODE(
    MyApplication, my_application, G_TYPE_OBJECT,
    G_IMPLEMENT_INTERFACE(fl_plugin_registry_get_type(), registry_init)
        G_IMPLEMENT_INTERFACE(fl_plugin_registrar_get_type(), registrar_init)
            G_IMPLEMENT_INTERFACE(fl_binary_messenger_get_type(),
                                  messenger_init))

static FlPluginRegistrar* get_registrar_for_plugin(FlPluginRegistry* registry,
                                                   const gchar* /*name*/) {
  return FL_PLUGIN_REGISTRAR(g_object_ref(registry));
}

static void registry_init(FlPluginRegistryInterface* iface) {
  iface->get_registrar_for_plugin = get_registrar_for_plugin;
}

static FlBinaryMessenger* get_messenger(FlPluginRegistrar* registrar) {
  return FL_BINARY_MESSENGER(registrar);
}

static void registrar_init(FlPluginRegistrarInterface* iface) {
  iface->get_messenger = get_messenger;
}

static void set_message_handler_on_channel(
    FlBinaryMessenger* messenger, const gchar* channel,
    FlBinaryMessengerMessageHandler function, gpointer user_data,
    GDestroyNotify destroy_notify) {
  HandlerTable& handlers = *MY_APPLICATION(messenger)->handlers;
  if (function == nullptr) {
    handlers.erase(channel);
  } else {
    handlers[channel] = {function, user_data, destroy_notify};
  }
}

static gboolean send_response(FlBinaryMessenger* /*messenger*/,
                              FlBinaryMessengerResponseHandle* handle,
                              GBytes* response, GError** /*error*/) {
  auto* answer = reinterpret_cast<Answer*>(handle);
  answer->arrived = true;
  if (response != nullptr) answer->bytes = g_bytes_ref(response);
  return TRUE;
}

static void send_on_channel(FlBinaryMessenger* messenger,
                            const gchar* /*channel*/, GBytes* /*message*/,
                            GCancellable* /*cancellable*/,
                            GAsyncReadyCallback /*callback*/,
                            gpointer /*user_data*/) {
  MY_APPLICATION(messenger)->events++;
}

static void messenger_init(FlBinaryMessengerInterface* iface) {
  iface->set_message_handler_on_channel = set_message_handler_on_channel;
  iface->send_response = send_response;
  iface->send_on_channel = send_on_channel;
}

static void my_application_finalize(GObject* object) {
  MyApplication* self = MY_APPLICATION(object);
  g_clear_object(&self->codec);
  delete self->handlers;
  G_OBJECT_CLASS(my_application_parent_class)->finalize(object);
}

static void my_application_class_init(MyApplicationClass* klass) {
  G_OBJECT_CLASS(klass)->finalize = my_application_finalize;
}

static void my_application_init(MyApplication* self) {
  self->codec = FL_METHOD_CODEC(fl_standard_method_codec_new());
  self->handlers = new HandlerTable();
}

MyApplication* my_application_new() {
  return MY_APPLICATION(g_object_new(my_application_get_type(), nullptr));
}

static FlMethodResponse* decode(MyApplication* self, Answer* answer) {
  if (answer->bytes == nullptr) return nullptr;
  return FL_METHOD_CODEC_GET_CLASS(self->codec)
      ->decode_response(self->codec, answer->bytes, nullptr);
}

FlMethodResponse* my_application_call(MyApplication* self, const char* channel,
                                      const char* method, FlValue* args) {
  g_autoptr(FlValue) owned_args = args != nullptr ? args : fl_value_new_null();
  g_autoptr(GBytes) message =
      FL_METHOD_CODEC_GET_CLASS(self->codec)
          ->encode_method_call(self->codec, method, owned_args, nullptr);
  const auto found = self->handlers->find(channel);
  if (found == self->handlers->end()) return nullptr;
  g_autoptr(GObject) handle =
      G_OBJECT(g_object_new(answer_get_type(), nullptr));
  auto* answer = reinterpret_cast<Answer*>(handle);
  found->second.function(FL_BINARY_MESSENGER(self), channel, message,
                         FL_BINARY_MESSENGER_RESPONSE_HANDLE(handle),
                         found->second.user_data);
  while (!answer->arrived) g_main_context_iteration(nullptr, TRUE);
  return decode(self, answer);
}

int my_application_events(MyApplication* self) { return self->events; }

void my_application_shut_down(MyApplication* self) {
  HandlerTable gone;
  gone.swap(*self->handlers);
  for (const auto& entry : gone) {
    const Handler& handler = entry.second;
    if (handler.destroy_notify != nullptr) {
      handler.destroy_notify(handler.user_data);
    }
  }
}
