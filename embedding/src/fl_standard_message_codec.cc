// The codec's type, its entry points, and whole messages.
#include "as_real.h"
#include "standard_encoding.h"

using embedding::NestingGuard;

namespace embedding {

namespace {

thread_local int nesting_depth = 0;

}  // namespace

// The real library goes as deep as the stack.
NestingGuard::NestingGuard(GError** error)
    : ok_(kAsReal || nesting_depth <= kMaxDepth) {
  ++nesting_depth;
  if (!ok_) {
    g_set_error(error, FL_MESSAGE_CODEC_ERROR, FL_MESSAGE_CODEC_ERROR_FAILED,
                "Values are nested more than %d deep", kMaxDepth);
  }
}

NestingGuard::~NestingGuard() { --nesting_depth; }

}  // namespace embedding

G_DEFINE_TYPE(FlStandardMessageCodec, fl_standard_message_codec,
              fl_message_codec_get_type())

static GBytes* encode_message(FlMessageCodec* codec, FlValue* message,
                              GError** error) {
  g_autoptr(GByteArray) buffer = g_byte_array_new();
  if (!fl_standard_message_codec_write_value(FL_STANDARD_MESSAGE_CODEC(codec),
                                             buffer, message, error)) {
    return nullptr;
  }
  return g_byte_array_free_to_bytes(g_steal_pointer(&buffer));
}

static FlValue* decode_message(FlMessageCodec* codec, GBytes* message,
                               GError** error) {
  // No bytes at all are a message: that of nothing.
  if (g_bytes_get_size(message) == 0) return fl_value_new_null();
  size_t offset = 0;
  g_autoptr(FlValue) value = fl_standard_message_codec_read_value(
      FL_STANDARD_MESSAGE_CODEC(codec), message, &offset, error);
  if (value == nullptr) return nullptr;
  const size_t left = g_bytes_get_size(message) - offset;
  if (left != 0) {
    g_set_error(error, FL_MESSAGE_CODEC_ERROR,
                FL_MESSAGE_CODEC_ERROR_ADDITIONAL_DATA,
                "%zu bytes are left after the message", left);
    return nullptr;
  }
  return g_steal_pointer(&value);
}

static void fl_standard_message_codec_class_init(
    FlStandardMessageCodecClass* klass) {
  FL_MESSAGE_CODEC_CLASS(klass)->encode_message = encode_message;
  FL_MESSAGE_CODEC_CLASS(klass)->decode_message = decode_message;
  klass->write_value = embedding::write_standard_value;
  klass->read_value_of_type = embedding::read_standard_value;
}

static void fl_standard_message_codec_init(FlStandardMessageCodec*) {}

FlStandardMessageCodec* fl_standard_message_codec_new(void) {
  return FL_STANDARD_MESSAGE_CODEC(
      g_object_new(fl_standard_message_codec_get_type(), nullptr));
}

gboolean fl_standard_message_codec_write_value(FlStandardMessageCodec* codec,
                                               GByteArray* buffer,
                                               FlValue* value, GError** error) {
  g_return_val_if_fail(FL_IS_STANDARD_MESSAGE_CODEC(codec), FALSE);
  g_return_val_if_fail(buffer != nullptr, FALSE);
  const NestingGuard nesting(error);
  if (!nesting.ok()) return FALSE;
  g_autoptr(FlValue) written =
      value != nullptr ? fl_value_ref(value) : fl_value_new_null();
  return FL_STANDARD_MESSAGE_CODEC_GET_CLASS(codec)->write_value(
      codec, buffer, written, error);
}

FlValue* fl_standard_message_codec_read_value(FlStandardMessageCodec* codec,
                                              GBytes* buffer, size_t* offset,
                                              GError** error) {
  g_return_val_if_fail(FL_IS_STANDARD_MESSAGE_CODEC(codec), nullptr);
  g_return_val_if_fail(buffer != nullptr, nullptr);
  g_return_val_if_fail(offset != nullptr, nullptr);
  const NestingGuard nesting(error);
  if (!nesting.ok()) return nullptr;
  gsize size;
  const auto* data =
      static_cast<const uint8_t*>(g_bytes_get_data(buffer, &size));
  if (*offset >= size) {
    g_set_error_literal(error, FL_MESSAGE_CODEC_ERROR,
                        FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA,
                        "The message ends before a value");
    return nullptr;
  }
  const int type = data[(*offset)++];
  return FL_STANDARD_MESSAGE_CODEC_GET_CLASS(codec)->read_value_of_type(
      codec, buffer, offset, type, error);
}
