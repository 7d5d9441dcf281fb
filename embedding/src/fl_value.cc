// FlValue's life, its scalars and its texts.
#include "fl_value_private.h"

using embedding::Content;
using embedding::content_of;
using embedding::new_value;

FlValue* fl_value_new_null(void) { return new_value<FL_VALUE_TYPE_NULL>(); }

FlValue* fl_value_new_bool(bool value) {
  return new_value<FL_VALUE_TYPE_BOOL>(value);
}

FlValue* fl_value_new_int(int64_t value) {
  return new_value<FL_VALUE_TYPE_INT>(value);
}

FlValue* fl_value_new_float(double value) {
  return new_value<FL_VALUE_TYPE_FLOAT>(value);
}

FlValue* fl_value_new_string(const gchar* value) {
  g_return_val_if_fail(value != nullptr, nullptr);
  return new_value<FL_VALUE_TYPE_STRING>(value);
}

FlValue* fl_value_new_string_sized(const gchar* value, size_t value_length) {
  g_return_val_if_fail(value != nullptr || value_length == 0, nullptr);
  // Text ends at its first NUL: what follows could not be read back.
  const size_t length = value_length == 0 ? 0 : strnlen(value, value_length);
  return new_value<FL_VALUE_TYPE_STRING>(value, length);
}

FlValue* fl_value_new_custom(int type, gconstpointer value,
                             GDestroyNotify destroy_notify) {
  return new_value<FL_VALUE_TYPE_CUSTOM>(type, const_cast<gpointer>(value),
                                         destroy_notify);
}

FlValue* fl_value_new_custom_object(int type, GObject* object) {
  g_return_val_if_fail(G_IS_OBJECT(object), nullptr);
  return fl_value_new_custom(type, g_object_ref(object), g_object_unref);
}

FlValue* fl_value_new_custom_object_take(int type, GObject* object) {
  g_return_val_if_fail(G_IS_OBJECT(object), nullptr);
  return fl_value_new_custom(type, object, g_object_unref);
}

// A plain counter: values stay on their thread, and each message makes many.
FlValue* fl_value_ref(FlValue* value) {
  g_return_val_if_fail(value != nullptr, nullptr);
  ++value->ref_count;
  return value;
}

void fl_value_unref(FlValue* value) {
  g_return_if_fail(value != nullptr);
  g_return_if_fail(value->ref_count > 0);
  if (--value->ref_count == 0) delete value;
}

FlValueType fl_value_get_type(FlValue* value) {
  g_return_val_if_fail(value != nullptr, FL_VALUE_TYPE_NULL);
  return value->type();
}

bool fl_value_get_bool(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_BOOL>(value);
  g_return_val_if_fail(content != nullptr, false);
  return *content;
}

int64_t fl_value_get_int(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_INT>(value);
  g_return_val_if_fail(content != nullptr, 0);
  return *content;
}

double fl_value_get_float(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_FLOAT>(value);
  g_return_val_if_fail(content != nullptr, 0.0);
  return *content;
}

const gchar* fl_value_get_string(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_STRING>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return content->c_str();
}

int fl_value_get_custom_type(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_CUSTOM>(value);
  g_return_val_if_fail(content != nullptr, 0);
  return content->type;
}

gconstpointer fl_value_get_custom_value(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_CUSTOM>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return content->content;
}

// The cast checks that the content is an object at all.
GObject* fl_value_get_custom_value_object(FlValue* value) {
  const auto* content = content_of<FL_VALUE_TYPE_CUSTOM>(value);
  g_return_val_if_fail(content != nullptr, nullptr);
  return G_OBJECT(content->content);
}
