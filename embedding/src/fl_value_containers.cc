// FlValue's lists and maps of values.
#include "fl_value_private.h"

using embedding::content_of;
using embedding::Map;
using embedding::new_reference;
using embedding::new_value;
using embedding::ValuePtr;

namespace {

// The borrowed value of the first entry whose key matches, or NULL.
template <typename Matches>
FlValue* find_value(const Map& map, Matches matches) {
  for (const auto& [key, value] : map) {
    if (matches(key.get())) return value.get();
  }
  return nullptr;
}

// Spares lookups by text a value of their own.
bool is_text(FlValue* value, const gchar* text) {
  const auto* content = content_of<FL_VALUE_TYPE_STRING>(value);
  return content != nullptr && *content == text;
}

// Linear, because any value may be a key and only equality is defined on them;
// the maps of channel messages are small.
void set_entry(Map* map, ValuePtr key, ValuePtr value) {
  for (auto& entry : *map) {
    if (!fl_value_equal(entry.first.get(), key.get())) continue;
    // The key goes as well: an equal key need not be the same object. Both old
    // ones are let go last, when the entry is whole again.
    std::swap(entry.first, key);
    std::swap(entry.second, value);
    return;
  }
  map->emplace_back(std::move(key), std::move(value));
}

// The number of elements of whatever has them, or -1.
struct CountElements {
  template <typename T>
  gssize operator()(const std::vector<T>& elements) const {
    return static_cast<gssize>(elements.size());
  }
  template <typename T>
  gssize operator()(const T&) const {
    return -1;
  }
};

}  // namespace

FlValue* fl_value_new_list(void) { return new_value<FL_VALUE_TYPE_LIST>(); }

FlValue* fl_value_new_list_from_strv(const gchar* const* value) {
  g_return_val_if_fail(value != nullptr, nullptr);
  FlValue* list = fl_value_new_list();
  for (; *value != nullptr; ++value) {
    fl_value_append_take(list, fl_value_new_string(*value));
  }
  return list;
}

FlValue* fl_value_new_map(void) { return new_value<FL_VALUE_TYPE_MAP>(); }

void fl_value_append(FlValue* value, FlValue* child) {
  auto* list = content_of<FL_VALUE_TYPE_LIST>(value);
  g_return_if_fail(list != nullptr);
  g_return_if_fail(child != nullptr);
  list->push_back(new_reference(child));
}

void fl_value_append_take(FlValue* value, FlValue* child) {
  auto* list = content_of<FL_VALUE_TYPE_LIST>(value);
  g_return_if_fail(list != nullptr);
  g_return_if_fail(child != nullptr);
  list->emplace_back(child);
}

void fl_value_set(FlValue* value, FlValue* key, FlValue* child_value) {
  auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_if_fail(map != nullptr);
  g_return_if_fail(key != nullptr);
  g_return_if_fail(child_value != nullptr);
  set_entry(map, new_reference(key), new_reference(child_value));
}

void fl_value_set_take(FlValue* value, FlValue* key, FlValue* child_value) {
  auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_if_fail(map != nullptr);
  g_return_if_fail(key != nullptr);
  g_return_if_fail(child_value != nullptr);
  set_entry(map, ValuePtr(key), ValuePtr(child_value));
}

void fl_value_set_string(FlValue* value, const gchar* key,
                         FlValue* child_value) {
  auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_if_fail(map != nullptr);
  g_return_if_fail(key != nullptr);
  g_return_if_fail(child_value != nullptr);
  set_entry(map, ValuePtr(fl_value_new_string(key)),
            new_reference(child_value));
}

void fl_value_set_string_take(FlValue* value, const gchar* key,
                              FlValue* child_value) {
  auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_if_fail(map != nullptr);
  g_return_if_fail(key != nullptr);
  g_return_if_fail(child_value != nullptr);
  set_entry(map, ValuePtr(fl_value_new_string(key)), ValuePtr(child_value));
}

size_t fl_value_get_length(FlValue* value) {
  g_return_val_if_fail(value != nullptr, 0);
  const gssize length = std::visit(CountElements(), value->content);
  g_return_val_if_fail(length >= 0, 0);
  return static_cast<size_t>(length);
}

FlValue* fl_value_get_list_value(FlValue* value, size_t index) {
  const auto* list = content_of<FL_VALUE_TYPE_LIST>(value);
  g_return_val_if_fail(list != nullptr, nullptr);
  return (*list)[index].get();
}

FlValue* fl_value_get_map_key(FlValue* value, size_t index) {
  const auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_val_if_fail(map != nullptr, nullptr);
  return (*map)[index].first.get();
}

FlValue* fl_value_get_map_value(FlValue* value, size_t index) {
  const auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_val_if_fail(map != nullptr, nullptr);
  return (*map)[index].second.get();
}

FlValue* fl_value_lookup(FlValue* value, FlValue* key) {
  const auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_val_if_fail(map != nullptr, nullptr);
  g_return_val_if_fail(key != nullptr, nullptr);
  return find_value(*map, [key](FlValue* k) { return fl_value_equal(k, key); });
}

FlValue* fl_value_lookup_string(FlValue* value, const gchar* key) {
  const auto* map = content_of<FL_VALUE_TYPE_MAP>(value);
  g_return_val_if_fail(map != nullptr, nullptr);
  g_return_val_if_fail(key != nullptr, nullptr);
  return find_value(*map, [key](FlValue* k) { return is_text(k, key); });
}
