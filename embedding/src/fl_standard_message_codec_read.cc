// Reading of the standard encoding. Nothing here trusts the message: each size
// is held against the bytes that are there before anything is allocated for
// it, and lists of values grow only by values that were really read.
#include <cstring>
#include <vector>

#include "standard_encoding.h"

namespace embedding {

namespace {

// The message and where in it the next read goes.
class Reader {
 public:
  Reader(GBytes* buffer, size_t* offset, GError** error)
      : offset_(offset), error_(error) {
    data_ = static_cast<const uint8_t*>(g_bytes_get_data(buffer, &size_));
  }

  // `count` elements of `element_size` bytes: where they start, or NULL with
  // the error set if the message ends before they do. Divides, because the
  // product of a hostile count may wrap around.
  const uint8_t* Take(size_t count, size_t element_size) {
    const size_t left = *offset_ < size_ ? size_ - *offset_ : 0;
    if (count > left / element_size) return Fail(count, element_size, left);
    const uint8_t* start = data_ + *offset_;
    *offset_ += count * element_size;
    return start;
  }

  bool Align(size_t alignment) {
    return Take(padding(*offset_, alignment), 1) != nullptr;
  }

  template <typename T>
  bool Scalar(T* value) {
    const uint8_t* bytes = Take(1, sizeof(T));
    if (bytes == nullptr) return false;
    memcpy(value, bytes, sizeof(T));
    return true;
  }

 private:
  const uint8_t* Fail(size_t count, size_t element_size, size_t left) {
    g_set_error(error_, FL_MESSAGE_CODEC_ERROR,
                FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA,
                "The message ends early: %zu times %zu bytes are due at byte "
                "%zu, %zu bytes are left",
                count, element_size, *offset_, left);
    return nullptr;
  }

  const uint8_t* data_ = nullptr;
  gsize size_ = 0;
  size_t* const offset_;
  GError** const error_;
};

FlValue* read_int32(Reader reader) {
  int32_t value;
  return reader.Scalar(&value) ? fl_value_new_int(value) : nullptr;
}

FlValue* read_int64(Reader reader) {
  int64_t value;
  return reader.Scalar(&value) ? fl_value_new_int(value) : nullptr;
}

FlValue* read_float64(Reader reader) {
  double value;
  return reader.Align(sizeof value) && reader.Scalar(&value)
             ? fl_value_new_float(value)
             : nullptr;
}

FlValue* read_string(Reader reader, size_t length) {
  const uint8_t* text = reader.Take(length, 1);
  if (text == nullptr) return nullptr;
  return fl_value_new_string_sized(reinterpret_cast<const gchar*>(text),
                                   length);
}

FlValue* read_uint8_list(Reader reader, size_t length) {
  const uint8_t* bytes = reader.Take(length, 1);
  return bytes == nullptr ? nullptr : fl_value_new_uint8_list(bytes, length);
}

// Aligned within the message is not aligned in memory: a message may be a part
// of something larger. Hence the copy on the way.
template <typename T>
FlValue* read_typed_list(Reader reader, size_t length,
                         FlValue* (*new_list)(const T*, size_t)) {
  if (!reader.Align(sizeof(T))) return nullptr;
  const uint8_t* bytes = reader.Take(length, sizeof(T));
  if (bytes == nullptr) return nullptr;
  std::vector<T> elements(length);
  // An empty vector has no data, and memcpy takes no NULL.
  if (length != 0) memcpy(elements.data(), bytes, length * sizeof(T));
  return new_list(elements.data(), length);
}

// The length is not held against the bytes ahead: values come in sizes that
// only reading tells, and the first fault met decides the error.
FlValue* read_list(FlStandardMessageCodec* codec, GBytes* buffer,
                   size_t* offset, size_t length, GError** error) {
  g_autoptr(FlValue) list = fl_value_new_list();
  for (size_t i = 0; i < length; ++i) {
    FlValue* element =
        fl_standard_message_codec_read_value(codec, buffer, offset, error);
    if (element == nullptr) return nullptr;
    fl_value_append_take(list, element);
  }
  return g_steal_pointer(&list);
}

// A key that comes twice replaces the former entry, as setting it would.
FlValue* read_map(FlStandardMessageCodec* codec, GBytes* buffer, size_t* offset,
                  size_t length, GError** error) {
  g_autoptr(FlValue) map = fl_value_new_map();
  for (size_t i = 0; i < length; ++i) {
    g_autoptr(FlValue) key =
        fl_standard_message_codec_read_value(codec, buffer, offset, error);
    if (key == nullptr) return nullptr;
    g_autoptr(FlValue) value =
        fl_standard_message_codec_read_value(codec, buffer, offset, error);
    if (value == nullptr) return nullptr;
    fl_value_set(map, key, value);
  }
  return g_steal_pointer(&map);
}

// The types that are a size and then that many elements.
FlValue* read_sized(FlStandardMessageCodec* codec, GBytes* buffer,
                    size_t* offset, int type, GError** error) {
  uint32_t size;
  if (!fl_standard_message_codec_read_size(codec, buffer, offset, &size,
                                           error)) {
    return nullptr;
  }
  Reader reader(buffer, offset, error);
  switch (type) {
    case kWireString:
      return read_string(reader, size);
    case kWireUint8List:
      return read_uint8_list(reader, size);
    case kWireInt32List:
      return read_typed_list(reader, size, fl_value_new_int32_list);
    case kWireInt64List:
      return read_typed_list(reader, size, fl_value_new_int64_list);
    case kWireFloat64List:
      return read_typed_list(reader, size, fl_value_new_float_list);
    case kWireFloat32List:
      return read_typed_list(reader, size, fl_value_new_float32_list);
    case kWireList:
      return read_list(codec, buffer, offset, size, error);
    default:
      return read_map(codec, buffer, offset, size, error);
  }
}

}  // namespace

FlValue* read_standard_value(FlStandardMessageCodec* codec, GBytes* buffer,
                             size_t* offset, int type, GError** error) {
  switch (type) {
    case kWireNull:
      return fl_value_new_null();
    case kWireTrue:
    case kWireFalse:
      return fl_value_new_bool(type == kWireTrue);
    case kWireInt32:
      return read_int32(Reader(buffer, offset, error));
    case kWireInt64:
      return read_int64(Reader(buffer, offset, error));
    case kWireFloat64:
      return read_float64(Reader(buffer, offset, error));
    case kWireString:
    case kWireUint8List:
    case kWireInt32List:
    case kWireInt64List:
    case kWireFloat64List:
    case kWireFloat32List:
    case kWireList:
    case kWireMap:
      return read_sized(codec, buffer, offset, type, error);
    default:
      g_set_error(error, FL_MESSAGE_CODEC_ERROR,
                  FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE,
                  "The standard encoding has no type %d", type);
      return nullptr;
  }
}

}  // namespace embedding

gboolean fl_standard_message_codec_read_size(FlStandardMessageCodec* codec,
                                             GBytes* buffer, size_t* offset,
                                             uint32_t* value, GError** error) {
  g_return_val_if_fail(FL_IS_STANDARD_MESSAGE_CODEC(codec), FALSE);
  g_return_val_if_fail(buffer != nullptr, FALSE);
  g_return_val_if_fail(offset != nullptr, FALSE);
  g_return_val_if_fail(value != nullptr, FALSE);
  embedding::Reader reader(buffer, offset, error);
  uint8_t first;
  if (!reader.Scalar(&first)) return FALSE;
  if (first == embedding::kSizeIn32Bits) return reader.Scalar(value);
  // A longer form than the size needs is accepted, as writers may differ.
  uint16_t size16 = first;
  if (first == embedding::kSizeIn16Bits && !reader.Scalar(&size16)) {
    return FALSE;
  }
  *value = size16;
  return TRUE;
}
