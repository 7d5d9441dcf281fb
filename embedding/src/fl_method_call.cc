// One call, from its arrival to its answer. It owns all that answering needs,
// so that it may outlive the handler, the channel and the engine.
#include "as_real.h"
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

// Sends the answer. A caller that does not ask for the error shall not lose it
// unseen.
static gboolean answer(FlMethodCall* call, FlMethodResponse* response,
                       GError** error) {
  // Collected here first: even on failure there may be none.
  g_autoptr(GError) failure = nullptr;
  if (embedding::send_method_response(call->channel, call->response_handle,
                                      response, &failure)) {
    return TRUE;
  }
  if (failure == nullptr) return FALSE;
  if (error == nullptr) {
    g_warning("Failed to answer the method call \"%s\": %s", call->name,
              failure->message);
  }
  // Handed over, not shared: the caller frees it.
  g_propagate_error(error, g_steal_pointer(&failure));
  return FALSE;
}

// The same with the real library's two mistakes: it looks into an error that
// may not be there, and frees the one that it hands out.
static gboolean answer_as_real(FlMethodCall* call, FlMethodResponse* response,
                               GError** error) {
  g_autoptr(GError) failure = nullptr;
  if (embedding::send_method_response(call->channel, call->response_handle,
                                      response, &failure)) {
    return TRUE;
  }
  if (error == nullptr) g_warning("Failed to answer: %s", failure->message);
  g_propagate_error(error, failure);
  return FALSE;
}

gboolean fl_method_call_respond(FlMethodCall* method_call,
                                FlMethodResponse* response, GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), FALSE);
  g_return_val_if_fail(FL_IS_METHOD_RESPONSE(response), FALSE);
  return embedding::kAsReal ? answer_as_real(method_call, response, error)
                            : answer(method_call, response, error);
}

gboolean fl_method_call_respond_success(FlMethodCall* method_call,
                                        FlValue* result, GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), FALSE);
  g_autoptr(FlMethodSuccessResponse) response =
      fl_method_success_response_new(result);
  return answer(method_call, FL_METHOD_RESPONSE(response), error);
}

gboolean fl_method_call_respond_error(FlMethodCall* method_call,
                                      const gchar* code, const gchar* message,
                                      FlValue* details, GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), FALSE);
  g_return_val_if_fail(code != nullptr, FALSE);
  g_autoptr(FlMethodErrorResponse) response =
      fl_method_error_response_new(code, message, details);
  return answer(method_call, FL_METHOD_RESPONSE(response), error);
}

gboolean fl_method_call_respond_not_implemented(FlMethodCall* method_call,
                                                GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_CALL(method_call), FALSE);
  g_autoptr(FlMethodNotImplementedResponse) response =
      fl_method_not_implemented_response_new();
  return answer(method_call, FL_METHOD_RESPONSE(response), error);
}
