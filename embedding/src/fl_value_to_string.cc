// Values as text for people: log lines and test failures.
#include <string>
#include <string_view>

#include "fl_value_private.h"

using embedding::Custom;
using embedding::List;
using embedding::Map;

namespace {

void append_content(std::string* out, std::monostate) { *out += "null"; }

void append_content(std::string* out, bool value) {
  *out += value ? "true" : "false";
}

void append_content(std::string* out, int64_t value) {
  *out += std::to_string(value);
}

// Sixteen decimals, less the trailing zeros but for one. The decimal point is
// a point in every locale.
void append_content(std::string* out, double value) {
  char buffer[400];  // DBL_MAX has 309 digits before the point.
  std::string_view text =
      g_ascii_formatd(buffer, sizeof buffer, "%.16f", value);
  const size_t point = text.find('.');
  if (point != std::string_view::npos) {  // Infinities and NaN have none.
    const size_t last = text.find_last_not_of('0');
    text = text.substr(0, std::max(last, point + 1) + 1);
  }
  *out += text;
}

void append_content(std::string* out, const std::string& value) {
  *out += value;
}

void append_value(std::string* out, FlValue* value);

void append_element(std::string* out, const embedding::ValuePtr& element) {
  append_value(out, element.get());
}

void append_element(std::string* out, const Map::value_type& entry) {
  append_value(out, entry.first.get());
  *out += ": ";
  append_value(out, entry.second.get());
}

void append_element(std::string* out, float element) {
  append_content(out, static_cast<double>(element));
}

void append_element(std::string* out, double element) {
  append_content(out, element);
}

template <typename Integer>
void append_element(std::string* out, const Integer& element) {
  append_content(out, static_cast<int64_t>(element));
}

template <typename Elements>
void append_elements(std::string* out, const Elements& elements) {
  const char* separator = "";
  for (const auto& element : elements) {
    *out += separator;
    append_element(out, element);
    separator = ", ";
  }
}

template <typename T>
void append_content(std::string* out, const std::vector<T>& elements) {
  *out += '[';
  append_elements(out, elements);
  *out += ']';
}

void append_content(std::string* out, const Map& map) {
  *out += '{';
  append_elements(out, map);
  *out += '}';
}

void append_content(std::string* out, const Custom& custom) {
  *out += "(custom " + std::to_string(custom.type) + ")";
}

void append_value(std::string* out, FlValue* value) {
  std::visit([out](const auto& content) { append_content(out, content); },
             value->content);
}

}  // namespace

gchar* fl_value_to_string(FlValue* value) {
  g_return_val_if_fail(value != nullptr, nullptr);
  std::string text;
  append_value(&text, value);
  return g_strdup(text.c_str());
}
