// One call, from its arrival to its answer. It owns all that answering needs,
// so that it may outlive the handler, the channel and the engine.
#include "fl_method_channel_private.h"

struct _FlMethodCall {
  GObject parent_instance;

  gchar* name;
  FlValue* args;
  FlMethodChannel* channel;
  FlBinaryMessengerResponseHandle* response_handle;
};

G_DEFINE_TYPE(FlMethodCall, fl_method_call, G_TYPE_OBJECT)

static void fl_method_call_dispose(GObject* object) {
  FlMethodCall* call = FL_METHOD_CALL(object);
  g_clear_pointer(&call->name, g_free);
  g_clear_pointer(&call->args, fl_value_unref);
  // The handle first: its end may still want the messenger, which the channel
  // keeps alive.
  g_clear_object(&call->response_handle);
  g_clear_object(&call->channel);
  G_OBJECT_CLASS(fl_method_call_parent_class)->dispose(object);
}

static void fl_method_call_class_init(FlMethodCallClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_method_call_dispose;
}

static void fl_method_call_init(FlMethodCall*) {}

namespace embedding {

FlMethodCall* new_method_call(
    const gchar* name, FlValue* args, FlMethodChannel* channel,
    FlBinaryMessengerResponseHandle* response_handle) {
  auto* call = FL_METHOD_CALL(g_object_new(fl_method_call_get_type(), nullptr));
  call->name = g_strdup(name);
  call->args = fl_value_ref(args);
  call->channel = FL_METHOD_CHANNEL(g_object_ref(channel));
  call->response_handle =
      FL_BINARY_MESSENGER_RESPONSE_HANDLE(g_object_ref(response_handle));
  return call;
}

}  // namespace embedding

const gchar* fl_method_call_get_name(FlMethodCall* method_call) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), nullptr);
  return method_call->name;
}

FlValue* fl_method_call_get_args(FlMethodCall* method_call) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), nullptr);
  return method_call->args;
}

gboolean fl_method_call_respond(FlMethodCall* method_call,
                                FlMethodResponse* response, GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), FALSE);
  g_return_val_if_fail(FL_IS_METHOD_RESPONSE(response), FALSE);
  // The messenger's error is collected here first: there may be none even on
  // failure, and the caller may not want one.
  g_autoptr(GError) failure = nullptr;
  if (embedding::send_method_response(method_call->channel,
                                      method_call->response_handle, response,
                                      &failure)) {
    return TRUE;
  }
  // A caller that does not ask for the error shall not lose it unseen.
  if (error == nullptr && failure != nullptr) {
    g_warning("Failed to answer the method call \"%s\": %s", method_call->name,
              failure->message);
  }
  // Handed over, not shared: the caller frees it.
  if (failure != nullptr) {
    g_propagate_error(error, g_steal_pointer(&failure));
  }
  return FALSE;
}

gboolean fl_method_call_respond_success(FlMethodCall* method_call,
                                        FlValue* result, GError** error) {
  g_autoptr(FlMethodSuccessResponse) response =
      fl_method_success_response_new(result);
  return fl_method_call_respond(method_call, FL_METHOD_RESPONSE(response),
                                error);
}

gboolean fl_method_call_respond_error(FlMethodCall* method_call,
                                      const gchar* code, const gchar* message,
                                      FlValue* details, GError** error) {
  g_return_val_if_fail(code != nullptr, FALSE);
  g_autoptr(FlMethodErrorResponse) response =
      fl_method_error_response_new(code, message, details);
  return fl_method_call_respond(method_call, FL_METHOD_RESPONSE(response),
                                error);
}

gboolean fl_method_call_respond_not_implemented(FlMethodCall* method_call,
                                                GError** error) {
  g_autoptr(FlMethodNotImplementedResponse) response =
      fl_method_not_implemented_response_new();
  return fl_method_call_respond(method_call, FL_METHOD_RESPONSE(response),
                                error);
}
