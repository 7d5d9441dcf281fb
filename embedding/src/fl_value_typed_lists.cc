// FlValue's lists of one numeric type.
#include "fl_value_private.h"

using embedding::content_of;
using embedding::new_value;

namespace {

template <FlValueType kType, typename T>
FlValue* new_typed_list(const T* elements, size_t count) {
  if (count == 0) return new_value<kType>();
  return new_value<kType>(elements, elements + count);
}

// NULL for an empty list, whatever the vector would give: callers may rely on
// it as they may with the real library.
template <typename T>
const T* elements_of(const std::vector<T>& content) {
  return content.empty() ? nullptr : content.data();
}

}  // namespace

FlValue* fl_value_new_uint8_list(const uint8_t* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  return new_typed_list<FL_VALUE_TYPE_UINT8_LIST>(value, value_length);
}

FlValue* fl_value_new_uint8_list_from_bytes(GBytes* value) {
  g_return_val_if_fail(value != nullptr, nullptr);
  gsize size;
  const void* data = g_bytes_get_data(value, &size);
  return fl_value_new_uint8_list(static_cast<const uint8_t*>(data), size);
}

FlValue* fl_value_new_int32_list(const int32_t* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  return new_typed_list<FL_VALUE_TYPE_INT32_LIST>(value, value_length);
}

FlValue* fl_value_new_int64_list(const int64_t* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  return new_typed_list<FL_VALUE_TYPE_INT64_LIST>(value, value_length);
}

FlValue* fl_value_new_float32_list(const float* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  return new_typed_list<FL_VALUE_TYPE_FLOAT32_LIST>(value, value_length);
}

FlValue* fl_value_new_float_list(const double* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  return new_typed_list<FL_VALUE_TYPE_FLOAT_LIST>(value, value_length);
}

const uint8_t* fl_value_get_uint8_list(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_UINT8_LIST>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return elements_of(*content);
}

const int32_t* fl_value_get_int32_list(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_INT32_LIST>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return elements_of(*content);
}

const int64_t* fl_value_get_int64_list(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_INT64_LIST>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return elements_of(*content);
}

const float* fl_value_get_float32_list(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_FLOAT32_LIST>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return elements_of(*content);
}

const double* fl_value_get_float_list(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_FLOAT_LIST>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return elements_of(*content);
}
