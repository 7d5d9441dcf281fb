// What a worker task returns, and how it becomes a method call's response.
#ifndef CORVANE_SRC_REPORT_REPLY_H_
#define CORVANE_SRC_REPORT_REPLY_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <string>
#include <utility>

#include "report/native_error.h"

namespace {

constexpr int kReplyEmpty = 0;   // success with null
constexpr int kReplyResult = 1;  // success with a map of the five figures
constexpr int kReplyError = 2;   // an error response

struct Reply {
  int kind = kReplyEmpty;
  std::string path;
  int64_t duration_ms = 0;
  int64_t bytes = 0;
  int64_t source_duration_ms = 0;
  int64_t dropped_append_bytes = 0;
  NativeError error;
};

Reply error_reply(NativeError error) {
  Reply reply;
  reply.kind = kReplyError;
  reply.error = std::move(error);
  return reply;
}

FlValue* string_or_null(const std::string& text) {
  return text.empty() ? fl_value_new_null() : fl_value_new_string(text.c_str());
}

// The map's keys stand in this order on the wire.
FlMethodResponse* result_response(const Reply& reply) {
  g_autoptr(FlValue) map = fl_value_new_map();
  const auto set = [&map](const char* key, int64_t figure) {
    fl_value_set_string_take(map, key, fl_value_new_int(figure));
  };
  fl_value_set_string_take(map, "path",
                           fl_value_new_string(reply.path.c_str()));
  set("durationMs", reply.duration_ms);
  set("bytes", reply.bytes);
  set("sourceDurationMs", reply.source_duration_ms);
  set("droppedAppendBytes", reply.dropped_append_bytes);
  return FL_METHOD_RESPONSE(fl_method_success_response_new(map));
}

FlMethodResponse* error_response(const NativeError& error) {
  g_autoptr(FlValue) details = fl_value_new_map();
  fl_value_set_string_take(details, "domain", string_or_null(error.domain));
  fl_value_set_string_take(details, "code",
                           error.has_native_code
                               ? fl_value_new_int(error.native_code)
                               : fl_value_new_null());
  fl_value_set_string_take(details, "path", string_or_null(error.path));
  return FL_METHOD_RESPONSE(fl_method_error_response_new(
      error.code.c_str(), error.message.c_str(), details));
}

// Main thread: FlValue's reference count is not atomic. Transfer full.
FlMethodResponse* response_of(const Reply& reply) {
  switch (reply.kind) {
    case kReplyResult:
      return result_response(reply);
    case kReplyError:
      return error_response(reply.error);
    default: {
      g_autoptr(FlValue) null = fl_value_new_null();
      return FL_METHOD_RESPONSE(fl_method_success_response_new(null));
    }
  }
}

}  // namespace

#endif  // CORVANE_SRC_REPORT_REPLY_H_
