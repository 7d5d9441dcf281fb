#include "support/reply.h"

#include <array>
#include <cstring>
#include <sstream>
#include <tuple>

namespace corvane_test {
namespace {

auto Fields(const Reply& r) {
  return std::tie(r.kind, r.path, r.duration_ms, r.bytes, r.source_duration_ms,
                  r.dropped_append_bytes, r.code, r.message, r.domain,
                  r.native_code, r.error_path);
}

template <typename T>
void PrintOptional(std::ostream& out, const std::optional<T>& value) {
  if (value.has_value()) {
    out << *value;
  } else {
    out << "null";
  }
}

Reply Malformed(FlValue* value) {
  g_autofree gchar* text = fl_value_to_string(value);
  Reply reply;
  reply.kind = Reply::Kind::kMalformed;
  reply.message = text;
  return reply;
}

// The value of entry `i` if the map has `key` right there, else NULL.
FlValue* EntryAt(FlValue* map, size_t i, const char* key) {
  FlValue* found = fl_value_get_map_key(map, i);
  if (fl_value_get_type(found) != FL_VALUE_TYPE_STRING) return nullptr;
  if (std::strcmp(fl_value_get_string(found), key) != 0) return nullptr;
  return fl_value_get_map_value(map, i);
}

bool IsMapOf(FlValue* value, size_t entries) {
  return value != nullptr && fl_value_get_type(value) == FL_VALUE_TYPE_MAP &&
         fl_value_get_length(value) == entries;
}

bool ReadString(FlValue* value, std::optional<std::string>* out) {
  if (value == nullptr) return false;
  if (fl_value_get_type(value) == FL_VALUE_TYPE_NULL) return true;
  if (fl_value_get_type(value) != FL_VALUE_TYPE_STRING) return false;
  *out = fl_value_get_string(value);
  return true;
}

bool ReadInt(FlValue* value, std::optional<int64_t>* out) {
  if (value == nullptr) return false;
  if (fl_value_get_type(value) == FL_VALUE_TYPE_NULL) return true;
  if (fl_value_get_type(value) != FL_VALUE_TYPE_INT) return false;
  *out = fl_value_get_int(value);
  return true;
}

bool ReadFigures(FlValue* map, Reply* reply) {
  if (!IsMapOf(map, 5)) return false;
  std::optional<std::string> path;
  if (!ReadString(EntryAt(map, 0, "path"), &path) || !path) return false;
  reply->path = *path;
  static constexpr std::array<const char*, 4> kKeys = {
      "durationMs", "bytes", "sourceDurationMs", "droppedAppendBytes"};
  const std::array<int64_t*, 4> figures = {&reply->duration_ms, &reply->bytes,
                                           &reply->source_duration_ms,
                                           &reply->dropped_append_bytes};
  for (size_t i = 0; i < kKeys.size(); ++i) {
    std::optional<int64_t> figure;
    if (!ReadInt(EntryAt(map, i + 1, kKeys[i]), &figure) || !figure) {
      return false;
    }
    *figures[i] = *figure;
  }
  return true;
}

Reply ReadSuccess(FlMethodSuccessResponse* response) {
  FlValue* result = fl_method_success_response_get_result(response);
  if (result == nullptr || fl_value_get_type(result) == FL_VALUE_TYPE_NULL) {
    return NullReply();
  }
  Reply reply;
  reply.kind = Reply::Kind::kFigures;
  return ReadFigures(result, &reply) ? reply : Malformed(result);
}

Reply ReadError(FlMethodErrorResponse* response) {
  const gchar* message = fl_method_error_response_get_message(response);
  Reply reply =
      PlainError(fl_method_error_response_get_code(response),
                 message == nullptr ? "(no message at all)" : message);
  FlValue* details = fl_method_error_response_get_details(response);
  if (details == nullptr) {
    reply.kind = Reply::Kind::kMalformed;
    return reply;
  }
  const bool whole = IsMapOf(details, 3) &&
                     ReadString(EntryAt(details, 0, "domain"), &reply.domain) &&
                     ReadInt(EntryAt(details, 1, "code"), &reply.native_code) &&
                     ReadString(EntryAt(details, 2, "path"), &reply.error_path);
  return whole ? reply : Malformed(details);
}

}  // namespace

bool operator==(const Reply& a, const Reply& b) {
  return Fields(a) == Fields(b);
}

std::ostream& operator<<(std::ostream& out, const Reply& reply) {
  switch (reply.kind) {
    case Reply::Kind::kNull:
      return out << "null";
    case Reply::Kind::kNotImplemented:
      return out << "not implemented";
    case Reply::Kind::kMalformed:
      return out << "malformed answer " << reply.message;
    case Reply::Kind::kFigures:
      return out << "{path: " << reply.path
                 << ", durationMs: " << reply.duration_ms
                 << ", bytes: " << reply.bytes
                 << ", sourceDurationMs: " << reply.source_duration_ms
                 << ", droppedAppendBytes: " << reply.dropped_append_bytes
                 << "}";
    case Reply::Kind::kError:
      break;
  }
  out << reply.code << " \"" << reply.message << "\" {domain: ";
  PrintOptional(out, reply.domain);
  out << ", code: ";
  PrintOptional(out, reply.native_code);
  out << ", path: ";
  PrintOptional(out, reply.error_path);
  return out << "}";
}

std::string ToString(const Reply& reply) {
  std::ostringstream out;
  out << reply;
  return out.str();
}

Reply NullReply() { return Reply(); }

Reply Figures(const std::string& path, int64_t duration_ms, int64_t bytes,
              int64_t dropped_append_bytes) {
  Reply reply;
  reply.kind = Reply::Kind::kFigures;
  reply.path = path;
  reply.duration_ms = duration_ms;
  reply.bytes = bytes;
  reply.source_duration_ms = duration_ms;
  reply.dropped_append_bytes = dropped_append_bytes;
  return reply;
}

Reply NotImplemented() {
  Reply reply;
  reply.kind = Reply::Kind::kNotImplemented;
  return reply;
}

Reply PlainError(const std::string& code, const std::string& message) {
  Reply reply;
  reply.kind = Reply::Kind::kError;
  reply.code = code;
  reply.message = message;
  return reply;
}

Reply InvalidArgs(const std::string& message) {
  return PlainError("INVALID_ARGS", message);
}

Reply FileError(const std::string& code, const std::string& message,
                const std::string& path) {
  Reply reply = PlainError(code, message);
  reply.error_path = path;
  return reply;
}

Reply ErrnoError(const std::string& code, const std::string& what,
                 const std::string& path, int errnum) {
  Reply reply = FileError(code, what + ": " + std::strerror(errnum), path);
  reply.domain = "errno";
  reply.native_code = errnum;
  return reply;
}

Reply FfmpegError(const std::string& what, const std::string& text,
                  const std::string& path, int averror) {
  Reply reply = FileError("ENCODE_FAILED", what + ": " + text, path);
  reply.domain = "ffmpeg";
  reply.native_code = averror;
  return reply;
}

Reply ReadReply(FlMethodResponse* response) {
  if (FL_IS_METHOD_SUCCESS_RESPONSE(response)) {
    return ReadSuccess(FL_METHOD_SUCCESS_RESPONSE(response));
  }
  if (FL_IS_METHOD_ERROR_RESPONSE(response)) {
    return ReadError(FL_METHOD_ERROR_RESPONSE(response));
  }
  return NotImplemented();
}

}  // namespace corvane_test
