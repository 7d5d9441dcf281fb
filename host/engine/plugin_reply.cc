#include "engine/plugin_reply.h"

namespace corvane {
namespace {

// The value at `key` when `map` is a map that holds one of that type there.
FlValue* find(FlValue* map, const char* key, FlValueType type) {
  if (map == nullptr || fl_value_get_type(map) != FL_VALUE_TYPE_MAP) {
    return nullptr;
  }
  FlValue* value = fl_value_lookup_string(map, key);
  if (value == nullptr || fl_value_get_type(value) != type) return nullptr;
  return value;
}

std::string string_at(FlValue* map, const char* key) {
  FlValue* value = find(map, key, FL_VALUE_TYPE_STRING);
  return value != nullptr ? fl_value_get_string(value) : "";
}

std::optional<int64_t> int_at(FlValue* map, const char* key) {
  FlValue* value = find(map, key, FL_VALUE_TYPE_INT);
  if (value == nullptr) return std::nullopt;
  return fl_value_get_int(value);
}

PluginError error_from(FlMethodErrorResponse* response) {
  PluginError error;
  error.code = fl_method_error_response_get_code(response);
  const gchar* message = fl_method_error_response_get_message(response);
  if (message != nullptr) error.message = message;
  FlValue* details = fl_method_error_response_get_details(response);
  error.domain = string_at(details, "domain");
  error.native_code = int_at(details, "code");
  error.path = string_at(details, "path");
  return error;
}

}  // namespace

std::optional<PluginError> error_in(FlMethodResponse* response) {
  if (FL_IS_METHOD_SUCCESS_RESPONSE(response)) return std::nullopt;
  if (FL_IS_METHOD_ERROR_RESPONSE(response)) {
    return error_from(FL_METHOD_ERROR_RESPONSE(response));
  }
  PluginError error;
  error.code = "NOT_IMPLEMENTED";
  error.message = "the plugin does not have this method";
  return error;
}

std::optional<SealedCapture> sealed_capture_in(FlMethodResponse* response) {
  if (!FL_IS_METHOD_SUCCESS_RESPONSE(response)) return std::nullopt;
  FlValue* result = fl_method_success_response_get_result(
      FL_METHOD_SUCCESS_RESPONSE(response));
  if (find(result, "path", FL_VALUE_TYPE_STRING) == nullptr) {
    return std::nullopt;
  }
  SealedCapture capture;
  capture.path = string_at(result, "path");
  capture.duration_ms = int_at(result, "durationMs").value_or(0);
  capture.bytes = int_at(result, "bytes").value_or(0);
  capture.source_duration_ms = int_at(result, "sourceDurationMs").value_or(0);
  capture.dropped_append_bytes =
      int_at(result, "droppedAppendBytes").value_or(0);
  return capture;
}

// A path stands before the figures and may hold anything, so the last counts.
std::optional<int64_t> figure_in(const std::string& line,
                                 const std::string& name) {
  const size_t at = line.rfind(" " + name + "=");
  if (at == std::string::npos) return std::nullopt;
  const char* const digits = line.c_str() + at + name.size() + 2;
  gchar* end = nullptr;
  const gint64 figure = g_ascii_strtoll(digits, &end, 10);
  if (end == digits) return std::nullopt;
  return figure;
}

std::string describe(const PluginError& error) {
  const std::string native_code =
      error.native_code ? std::to_string(*error.native_code) : "none";
  const auto or_none = [](const std::string& text) {
    return text.empty() ? std::string("none") : text;
  };
  return "code=" + error.code + " message=\"" + error.message +
         "\" domain=" + or_none(error.domain) + " nativeCode=" + native_code +
         " path=" + or_none(error.path);
}

}  // namespace corvane
