// Method calls and envelopes in the standard encoding.
#include <flutter_linux/flutter_linux.h>

struct _FlStandardMethodCodec {
  FlMethodCodec parent_instance;

  FlStandardMessageCodec* message_codec;
};

G_DEFINE_TYPE(FlStandardMethodCodec, fl_standard_method_codec,
              fl_method_codec_get_type())

namespace {

constexpr guint8 kEnvelopeSuccess = 0;
constexpr guint8 kEnvelopeError = 1;

FlStandardMessageCodec* message_codec_of(FlMethodCodec* codec) {
  return FL_STANDARD_METHOD_CODEC(codec)->message_codec;
}

// `text` may be NULL, which is written as null.
gboolean write_text(FlStandardMessageCodec* codec, GByteArray* buffer,
                    const gchar* text, GError** error) {
  g_autoptr(FlValue) value =
      text != nullptr ? fl_value_new_string(text) : fl_value_new_null();
  return fl_standard_message_codec_write_value(codec, buffer, value, error);
}

GBytes* to_bytes(GByteArray** buffer) {
  return g_byte_array_free_to_bytes(
      static_cast<GByteArray*>(g_steal_pointer(buffer)));
}

// FALSE with the error set if bytes are left. Not the code that a message
// codec gives for the same: that is how the real library tells them apart.
gboolean check_end(GBytes* message, size_t offset, GError** error) {
  const size_t left = g_bytes_get_size(message) - offset;
  if (left == 0) return TRUE;
  g_set_error(error, FL_MESSAGE_CODEC_ERROR, FL_MESSAGE_CODEC_ERROR_FAILED,
              "%zu bytes are left after the message", left);
  return FALSE;
}

gboolean check_string(FlValue* value, const gchar* what, GError** error) {
  if (fl_value_get_type(value) == FL_VALUE_TYPE_STRING) return TRUE;
  g_set_error(error, FL_MESSAGE_CODEC_ERROR, FL_MESSAGE_CODEC_ERROR_FAILED,
              "The %s is not a string", what);
  return FALSE;
}

bool is_null(FlValue* value) {
  return fl_value_get_type(value) == FL_VALUE_TYPE_NULL;
}

FlMethodResponse* read_success(FlStandardMessageCodec* codec, GBytes* message,
                               GError** error) {
  size_t offset = 1;
  g_autoptr(FlValue) result =
      fl_standard_message_codec_read_value(codec, message, &offset, error);
  if (result == nullptr || !check_end(message, offset, error)) return nullptr;
  return FL_METHOD_RESPONSE(fl_method_success_response_new(result));
}

FlMethodResponse* read_error(FlStandardMessageCodec* codec, GBytes* message,
                             GError** error) {
  size_t offset = 1;
  g_autoptr(FlValue) code =
      fl_standard_message_codec_read_value(codec, message, &offset, error);
  if (code == nullptr || !check_string(code, "error code", error)) {
    return nullptr;
  }
  g_autoptr(FlValue) text =
      fl_standard_message_codec_read_value(codec, message, &offset, error);
  if (text == nullptr ||
      (!is_null(text) && !check_string(text, "error message", error))) {
    return nullptr;
  }
  g_autoptr(FlValue) details =
      fl_standard_message_codec_read_value(codec, message, &offset, error);
  if (details == nullptr || !check_end(message, offset, error)) return nullptr;
  // Absent parts travel as null values and are absent again here.
  return FL_METHOD_RESPONSE(fl_method_error_response_new(
      fl_value_get_string(code),
      is_null(text) ? nullptr : fl_value_get_string(text),
      is_null(details) ? nullptr : details));
}

}  // namespace

static GBytes* encode_method_call(FlMethodCodec* codec, const gchar* name,
                                  FlValue* args, GError** error) {
  g_return_val_if_fail(name != nullptr, nullptr);
  FlStandardMessageCodec* values = message_codec_of(codec);
  g_autoptr(GByteArray) buffer = g_byte_array_new();
  if (!write_text(values, buffer, name, error) ||
      !fl_standard_message_codec_write_value(values, buffer, args, error)) {
    return nullptr;
  }
  return to_bytes(&buffer);
}

static gboolean decode_method_call(FlMethodCodec* codec, GBytes* message,
                                   gchar** name, FlValue** args,
                                   GError** error) {
  g_return_val_if_fail(message != nullptr, FALSE);
  FlStandardMessageCodec* values = message_codec_of(codec);
  size_t offset = 0;
  g_autoptr(FlValue) name_value =
      fl_standard_message_codec_read_value(values, message, &offset, error);
  if (name_value == nullptr ||
      !check_string(name_value, "method name", error)) {
    return FALSE;
  }
  g_autoptr(FlValue) args_value =
      fl_standard_message_codec_read_value(values, message, &offset, error);
  if (args_value == nullptr || !check_end(message, offset, error)) return FALSE;
  // Nothing is handed out before all of it has proved sound.
  *name = g_strdup(fl_value_get_string(name_value));
  *args = g_steal_pointer(&args_value);
  return TRUE;
}

static GBytes* encode_success_envelope(FlMethodCodec* codec, FlValue* result,
                                       GError** error) {
  g_autoptr(GByteArray) buffer = g_byte_array_new();
  g_byte_array_append(buffer, &kEnvelopeSuccess, 1);
  if (!fl_standard_message_codec_write_value(message_codec_of(codec), buffer,
                                             result, error)) {
    return nullptr;
  }
  return to_bytes(&buffer);
}

static GBytes* encode_error_envelope(FlMethodCodec* codec, const gchar* code,
                                     const gchar* message, FlValue* details,
                                     GError** error) {
  g_return_val_if_fail(code != nullptr, nullptr);
  FlStandardMessageCodec* values = message_codec_of(codec);
  g_autoptr(GByteArray) buffer = g_byte_array_new();
  g_byte_array_append(buffer, &kEnvelopeError, 1);
  if (!write_text(values, buffer, code, error) ||
      !write_text(values, buffer, message, error) ||
      !fl_standard_message_codec_write_value(values, buffer, details, error)) {
    return nullptr;
  }
  return to_bytes(&buffer);
}

static FlMethodResponse* decode_response(FlMethodCodec* codec, GBytes* message,
                                         GError** error) {
  // The channels take this for "not implemented"; for a codec it is no answer.
  if (message == nullptr || g_bytes_get_size(message) == 0) {
    g_set_error_literal(error, FL_MESSAGE_CODEC_ERROR,
                        FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA,
                        "The response is empty");
    return nullptr;
  }
  const auto* data =
      static_cast<const guint8*>(g_bytes_get_data(message, nullptr));
  switch (data[0]) {
    case kEnvelopeSuccess:
      return read_success(message_codec_of(codec), message, error);
    case kEnvelopeError:
      return read_error(message_codec_of(codec), message, error);
    default:
      g_set_error(error, FL_MESSAGE_CODEC_ERROR, FL_MESSAGE_CODEC_ERROR_FAILED,
                  "There is no envelope type %d", data[0]);
      return nullptr;
  }
}

static void fl_standard_method_codec_dispose(GObject* object) {
  g_clear_object(&FL_STANDARD_METHOD_CODEC(object)->message_codec);
  G_OBJECT_CLASS(fl_standard_method_codec_parent_class)->dispose(object);
}

static void fl_standard_method_codec_class_init(
    FlStandardMethodCodecClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = fl_standard_method_codec_dispose;
  FlMethodCodecClass* method_codec = FL_METHOD_CODEC_CLASS(klass);
  method_codec->encode_method_call = encode_method_call;
  method_codec->decode_method_call = decode_method_call;
  method_codec->encode_success_envelope = encode_success_envelope;
  method_codec->encode_error_envelope = encode_error_envelope;
  method_codec->decode_response = decode_response;
}

static void fl_standard_method_codec_init(FlStandardMethodCodec*) {}

FlStandardMethodCodec* fl_standard_method_codec_new(void) {
  g_autoptr(FlStandardMessageCodec) message_codec =
      fl_standard_message_codec_new();
  return fl_standard_method_codec_new_with_message_codec(message_codec);
}

FlStandardMethodCodec* fl_standard_method_codec_new_with_message_codec(
    FlStandardMessageCodec* message_codec) {
  g_return_val_if_fail(FL_IS_STANDARD_MESSAGE_CODEC(message_codec), nullptr);
  auto* codec = FL_STANDARD_METHOD_CODEC(
      g_object_new(fl_standard_method_codec_get_type(), nullptr));
  codec->message_codec = FL_STANDARD_MESSAGE_CODEC(g_object_ref(message_codec));
  return codec;
}
