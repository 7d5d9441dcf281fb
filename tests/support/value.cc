#include "support/value.h"

#include <cstring>

namespace corvane_test {

Value::Value(const char* text) : value_(fl_value_new_string(text)) {}
Value::Value(const std::string& text) : Value(text.c_str()) {}
Value::Value(int number) : Value(static_cast<int64_t>(number)) {}
Value::Value(int64_t number) : value_(fl_value_new_int(number)) {}
Value::Value(double number) : value_(fl_value_new_float(number)) {}
Value::Value(const Bytes& bytes)
    : value_(fl_value_new_uint8_list(bytes.data(), bytes.size())) {}

Value Value::Null() { return Value(fl_value_new_null()); }

Value Value::Bool(bool truth) { return Value(fl_value_new_bool(truth)); }

Value Value::Int32List(const std::vector<int32_t>& numbers) {
  return Value(fl_value_new_int32_list(numbers.data(), numbers.size()));
}

Value Value::List(std::initializer_list<Value> items) {
  Value list(fl_value_new_list());
  for (const Value& item : items) fl_value_append(list.get(), item.get());
  return list;
}

Value Value::Map(std::initializer_list<std::pair<const char*, Value>> items) {
  Value map(fl_value_new_map());
  for (const auto& [key, value] : items) {
    fl_value_set_string(map.get(), key, value.get());
  }
  return map;
}

Value::Value(const Value& other)
    : value_(other.value_ == nullptr ? nullptr : fl_value_ref(other.value_)) {}

Value& Value::operator=(Value other) {
  std::swap(value_, other.value_);
  return *this;
}

Value::~Value() {
  if (value_ != nullptr) fl_value_unref(value_);
}

Value Value::With(const char* key, const Value& value) const {
  Value copy = Without(key);
  fl_value_set_string(copy.get(), key, value.get());
  return copy;
}

Value Value::Without(const char* key) const {
  Value copy = Map({});
  for (size_t i = 0; i < fl_value_get_length(value_); ++i) {
    FlValue* kept = fl_value_get_map_key(value_, i);
    if (std::strcmp(fl_value_get_string(kept), key) == 0) continue;
    fl_value_set(copy.get(), kept, fl_value_get_map_value(value_, i));
  }
  return copy;
}

std::string Value::Text() const {
  if (value_ == nullptr) return "(absent)";
  g_autofree gchar* text = fl_value_to_string(value_);
  return text;
}

}  // namespace corvane_test
