// When two values are equal.
#include <algorithm>

#include "fl_value_private.h"

using embedding::Custom;
using embedding::List;
using embedding::Map;
using embedding::ValuePtr;

namespace {

bool same_content(const List& a, const List& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const ValuePtr& x, const ValuePtr& y) {
                      return fl_value_equal(x.get(), y.get());
                    });
}

// Whether the map has an equal value under an equal key.
bool holds_entry(const Map& map, const Map::value_type& entry) {
  for (const auto& [key, value] : map) {
    // Keys are unique, so the first equal one decides.
    if (fl_value_equal(key.get(), entry.first.get())) {
      return fl_value_equal(value.get(), entry.second.get());
    }
  }
  return false;
}

// Keys are unique, so as many entries and each of a's in b is enough.
bool same_content(const Map& a, const Map& b) {
  return a.size() == b.size() &&
         std::all_of(a.begin(), a.end(), [&b](const Map::value_type& entry) {
           return holds_entry(b, entry);
         });
}

// What a custom value points to means nothing here.
bool same_content(const Custom&, const Custom&) { return false; }

// Scalars, text and typed lists; floats as IEEE 754 has it: no NaN is equal.
template <typename T>
bool same_content(const T& a, const T& b) {
  return a == b;
}

}  // namespace

bool fl_value_equal(FlValue* a, FlValue* b) {
  g_return_val_if_fail(a != nullptr, false);
  g_return_val_if_fail(b != nullptr, false);
  if (a->type() != b->type()) return false;
  return std::visit(
      [b](const auto& content) {
        using T = std::decay_t<decltype(content)>;
        return same_content(content, std::get<T>(b->content));
      },
      a->content);
}
