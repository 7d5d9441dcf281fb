// The outcomes of a method call. Plain holders: what they mean on the wire is
// the codec's business.
#include <flutter_linux/flutter_linux.h>

struct _FlMethodSuccessResponse {
  FlMethodResponse parent_instance;

  FlValue* result;
};

struct _FlMethodErrorResponse {
  FlMethodResponse parent_instance;

  gchar* code;
  gchar* message;
  FlValue* details;
};

struct _FlMethodNotImplementedResponse {
  FlMethodResponse parent_instance;
};

G_DEFINE_QUARK(fl_method_response_error_quark, fl_method_response_error)

G_DEFINE_TYPE(FlMethodResponse, fl_method_response, G_TYPE_OBJECT)
G_DEFINE_TYPE(FlMethodSuccessResponse, fl_method_success_response,
              fl_method_response_get_type())
G_DEFINE_TYPE(FlMethodErrorResponse, fl_method_error_response,
              fl_method_response_get_type())
G_DEFINE_TYPE(FlMethodNotImplementedResponse,
              fl_method_not_implemented_response, fl_method_response_get_type())

static void fl_method_response_class_init(FlMethodResponseClass*) {}

static void fl_method_response_init(FlMethodResponse*) {}

static void fl_method_success_response_dispose(GObject* object) {
  g_clear_pointer(&FL_METHOD_SUCCESS_RESPONSE(object)->result, fl_value_unref);
  G_OBJECT_CLASS(fl_method_success_response_parent_class)->dispose(object);
}

static void fl_method_success_response_class_init(
    FlMethodSuccessResponseClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_method_success_response_dispose;
}

static void fl_method_success_response_init(FlMethodSuccessResponse*) {}

static void fl_method_error_response_dispose(GObject* object) {
  FlMethodErrorResponse* response = FL_METHOD_ERROR_RESPONSE(object);
  g_clear_pointer(&response->code, g_free);
  g_clear_pointer(&response->message, g_free);
  g_clear_pointer(&response->details, fl_value_unref);
  G_OBJECT_CLASS(fl_method_error_response_parent_class)->dispose(object);
}

static void fl_method_error_response_class_init(
    FlMethodErrorResponseClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_method_error_response_dispose;
}

static void fl_method_error_response_init(FlMethodErrorResponse*) {}

static void fl_method_not_implemented_response_class_init(
    FlMethodNotImplementedResponseClass*) {}

static void fl_method_not_implemented_response_init(
    FlMethodNotImplementedResponse*) {}

// All that the other side said, in one line: often nobody looks further.
static void set_remote_error(FlMethodErrorResponse* response, GError** error) {
  g_autofree gchar* details = response->details != nullptr
                                  ? fl_value_to_string(response->details)
                                  : nullptr;
  g_set_error(error, FL_METHOD_RESPONSE_ERROR,
              FL_METHOD_RESPONSE_ERROR_REMOTE_ERROR,
              "The method failed with %s%s%s%s%s", response->code,
              response->message != nullptr ? ": " : "",
              response->message != nullptr ? response->message : "",
              details != nullptr ? "; details: " : "",
              details != nullptr ? details : "");
}

FlValue* fl_method_response_get_result(FlMethodResponse* response,
                                       GError** error) {
  g_return_val_if_fail(FL_IS_METHOD_RESPONSE(response), nullptr);
  // A result may be absent: only `error` tells a failure from that.
  if (FL_IS_METHOD_SUCCESS_RESPONSE(response)) {
    return FL_METHOD_SUCCESS_RESPONSE(response)->result;
  }
  if (FL_IS_METHOD_ERROR_RESPONSE(response)) {
    set_remote_error(FL_METHOD_ERROR_RESPONSE(response), error);
  } else if (FL_IS_METHOD_NOT_IMPLEMENTED_RESPONSE(response)) {
    g_set_error_literal(error, FL_METHOD_RESPONSE_ERROR,
                        FL_METHOD_RESPONSE_ERROR_NOT_IMPLEMENTED,
                        "The method is not implemented");
  } else {
    g_set_error(
        error, FL_METHOD_RESPONSE_ERROR, FL_METHOD_RESPONSE_ERROR_FAILED,
        "A %s is no known kind of response", G_OBJECT_TYPE_NAME(response));
  }
  return nullptr;
}

FlMethodSuccessResponse* fl_method_success_response_new(FlValue* result) {
  auto* response = FL_METHOD_SUCCESS_RESPONSE(
      g_object_new(fl_method_success_response_get_type(), nullptr));
  if (result != nullptr) response->result = fl_value_ref(result);
  return response;
}

FlValue* fl_method_success_response_get_result(
    FlMethodSuccessResponse* response) {
  g_return_val_if_fail(FL_IS_METHOD_SUCCESS_RESPONSE(response), nullptr);
  return response->result;
}

FlMethodErrorResponse* fl_method_error_response_new(const gchar* code,
                                                    const gchar* message,
                                                    FlValue* details) {
  g_return_val_if_fail(code != nullptr, nullptr);
  auto* response = FL_METHOD_ERROR_RESPONSE(
      g_object_new(fl_method_error_response_get_type(), nullptr));
  response->code = g_strdup(code);
  response->message = g_strdup(message);
  if (details != nullptr) response->details = fl_value_ref(details);
  return response;
}

const gchar* fl_method_error_response_get_code(
    FlMethodErrorResponse* response) {
  g_return_val_if_fail(FL_IS_METHOD_ERROR_RESPONSE(response), nullptr);
  return response->code;
}

const gchar* fl_method_error_response_get_message(
    FlMethodErrorResponse* response) {
  g_return_val_if_fail(FL_IS_METHOD_ERROR_RESPONSE(response), nullptr);
  return response->message;
}

FlValue* fl_method_error_response_get_details(FlMethodErrorResponse* response) {
  g_return_val_if_fail(FL_IS_METHOD_ERROR_RESPONSE(response), nullptr);
  return response->details;
}

FlMethodNotImplementedResponse* fl_method_not_implemented_response_new(void) {
  return FL_METHOD_NOT_IMPLEMENTED_RESPONSE(
      g_object_new(fl_method_not_implemented_response_get_type(), nullptr));
}
