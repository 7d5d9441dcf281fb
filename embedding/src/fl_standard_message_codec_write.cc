// Writing of the standard encoding.
#include <cstring>
#include <limits>

#include "standard_encoding.h"

namespace embedding {

namespace {

void write_bytes(GByteArray* buffer, const void* data, size_t size) {
  if (size == 0) return;  // An empty list has no data to point to.
  g_byte_array_append(buffer, static_cast<const guint8*>(data),
                      static_cast<guint>(size));
}

void write_byte(GByteArray* buffer, uint8_t byte) {
  write_bytes(buffer, &byte, 1);
}

template <typename T>
void write_scalar(GByteArray* buffer, T value) {
  write_bytes(buffer, &value, sizeof value);
}

void write_padding(GByteArray* buffer, size_t alignment) {
  static const uint8_t kZeros[8] = {};
  write_bytes(buffer, kZeros, padding(buffer->len, alignment));
}

// The smallest form that holds the value, which readers need not rely on.
void write_int(GByteArray* buffer, int64_t value) {
  if (value >= std::numeric_limits<int32_t>::min() &&
      value <= std::numeric_limits<int32_t>::max()) {
    write_byte(buffer, kWireInt32);
    write_scalar(buffer, static_cast<int32_t>(value));
    return;
  }
  write_byte(buffer, kWireInt64);
  write_scalar(buffer, value);
}

// The padding comes between type byte and content, counted from the start of
// the buffer, which is therefore the start of the message.
void write_float(GByteArray* buffer, double value) {
  write_byte(buffer, kWireFloat64);
  write_padding(buffer, sizeof value);
  write_scalar(buffer, value);
}

// Whether the buffer, whose length has 32 bits, takes the content with its
// size, padding and type byte.
bool check_fits(const GByteArray* buffer, size_t size, GError** error) {
  constexpr size_t kLongestHead = 16;
  if (size + kLongestHead + buffer->len <= G_MAXUINT32) return true;
  g_set_error_literal(error, FL_MESSAGE_CODEC_ERROR,
                      FL_MESSAGE_CODEC_ERROR_FAILED,
                      "The message is too large");
  return false;
}

// One writer for all that is a size and then elements of `element_size` bytes,
// which is their alignment too.
gboolean write_elements(FlStandardMessageCodec* codec, GByteArray* buffer,
                        WireType type, const void* data, size_t count,
                        size_t element_size, GError** error) {
  if (!check_fits(buffer, count * element_size, error)) return FALSE;
  write_byte(buffer, type);
  fl_standard_message_codec_write_size(codec, buffer,
                                       static_cast<uint32_t>(count));
  write_padding(buffer, element_size);
  write_bytes(buffer, data, count * element_size);
  return TRUE;
}

template <typename T>
gboolean write_typed_list(FlStandardMessageCodec* codec, GByteArray* buffer,
                          WireType type, FlValue* value, const T* elements,
                          GError** error) {
  return write_elements(codec, buffer, type, elements,
                        fl_value_get_length(value), sizeof(T), error);
}

gboolean write_string(FlStandardMessageCodec* codec, GByteArray* buffer,
                      const gchar* text, GError** error) {
  return write_elements(codec, buffer, kWireString, text, strlen(text), 1,
                        error);
}

// Elements go through the class, so that a subclass's types work inside.
gboolean write_list(FlStandardMessageCodec* codec, GByteArray* buffer,
                    FlValue* list, GError** error) {
  const size_t length = fl_value_get_length(list);
  if (!check_fits(buffer, length, error)) return FALSE;
  write_byte(buffer, kWireList);
  fl_standard_message_codec_write_size(codec, buffer,
                                       static_cast<uint32_t>(length));
  for (size_t i = 0; i < length; ++i) {
    FlValue* element = fl_value_get_list_value(list, i);
    if (!fl_standard_message_codec_write_value(codec, buffer, element, error)) {
      return FALSE;
    }
  }
  return TRUE;
}

gboolean write_map(FlStandardMessageCodec* codec, GByteArray* buffer,
                   FlValue* map, GError** error) {
  const size_t length = fl_value_get_length(map);
  if (!check_fits(buffer, length, error)) return FALSE;
  write_byte(buffer, kWireMap);
  fl_standard_message_codec_write_size(codec, buffer,
                                       static_cast<uint32_t>(length));
  for (size_t i = 0; i < length; ++i) {
    FlValue* key = fl_value_get_map_key(map, i);
    FlValue* value = fl_value_get_map_value(map, i);
    if (!fl_standard_message_codec_write_value(codec, buffer, key, error) ||
        !fl_standard_message_codec_write_value(codec, buffer, value, error)) {
      return FALSE;
    }
  }
  return TRUE;
}

}  // namespace

gboolean write_standard_value(FlStandardMessageCodec* codec, GByteArray* buffer,
                              FlValue* value, GError** error) {
  switch (fl_value_get_type(value)) {
    case FL_VALUE_TYPE_NULL:
      write_byte(buffer, kWireNull);
      return TRUE;
    case FL_VALUE_TYPE_BOOL:
      write_byte(buffer, fl_value_get_bool(value) ? kWireTrue : kWireFalse);
      return TRUE;
    case FL_VALUE_TYPE_INT:
      write_int(buffer, fl_value_get_int(value));
      return TRUE;
    case FL_VALUE_TYPE_FLOAT:
      write_float(buffer, fl_value_get_float(value));
      return TRUE;
    case FL_VALUE_TYPE_STRING:
      return write_string(codec, buffer, fl_value_get_string(value), error);
    case FL_VALUE_TYPE_UINT8_LIST:
      return write_typed_list(codec, buffer, kWireUint8List, value,
                              fl_value_get_uint8_list(value), error);
    case FL_VALUE_TYPE_INT32_LIST:
      return write_typed_list(codec, buffer, kWireInt32List, value,
                              fl_value_get_int32_list(value), error);
    case FL_VALUE_TYPE_INT64_LIST:
      return write_typed_list(codec, buffer, kWireInt64List, value,
                              fl_value_get_int64_list(value), error);
    case FL_VALUE_TYPE_FLOAT_LIST:
      return write_typed_list(codec, buffer, kWireFloat64List, value,
                              fl_value_get_float_list(value), error);
    case FL_VALUE_TYPE_FLOAT32_LIST:
      return write_typed_list(codec, buffer, kWireFloat32List, value,
                              fl_value_get_float32_list(value), error);
    case FL_VALUE_TYPE_LIST:
      return write_list(codec, buffer, value, error);
    case FL_VALUE_TYPE_MAP:
      return write_map(codec, buffer, value, error);
    case FL_VALUE_TYPE_CUSTOM:
      break;
  }
  g_set_error(error, FL_MESSAGE_CODEC_ERROR,
              FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE,
              "The standard encoding has no form for a value of type %d",
              fl_value_get_type(value));
  return FALSE;
}

}  // namespace embedding

void fl_standard_message_codec_write_size(FlStandardMessageCodec* codec,
                                          GByteArray* buffer, uint32_t size) {
  g_return_if_fail(FL_IS_STANDARD_MESSAGE_CODEC(codec));
  g_return_if_fail(buffer != nullptr);
  using namespace embedding;
  if (size < kSizeIn16Bits) {
    write_byte(buffer, static_cast<uint8_t>(size));
  } else if (size <= G_MAXUINT16) {
    write_byte(buffer, kSizeIn16Bits);
    write_scalar(buffer, static_cast<uint16_t>(size));
  } else {
    write_byte(buffer, kSizeIn32Bits);
    write_scalar(buffer, size);
  }
}
