#include "commands/time_word.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <vector>

namespace corvane {
namespace {

constexpr double kMostSeconds = 1000.0 * 3600;
constexpr size_t kMostFields = 3;  // hours, minutes, seconds

// Digits, and a fraction where one is allowed; nothing else, so that neither
// "nan" nor "1e9" nor a sign gets through.
std::optional<double> number_in(const std::string& text, bool may_be_fraction) {
  const char* const allowed = may_be_fraction ? "0123456789." : "0123456789";
  if (text.empty() || text.find_first_not_of(allowed) != std::string::npos) {
    return std::nullopt;
  }
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, number);
  if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
  return number;
}

std::vector<std::string> fields_of(const std::string& word) {
  std::vector<std::string> fields;
  for (size_t begin = 0; begin <= word.size();) {
    const size_t end = std::min(word.find(':', begin), word.size());
    fields.push_back(word.substr(begin, end - begin));
    begin = end + 1;
  }
  return fields;
}

// 1:30 or 1:30:00; only the first field may be 60 or more.
std::optional<double> clock_seconds(const std::string& word) {
  const std::vector<std::string> fields = fields_of(word);
  if (fields.size() > kMostFields) return std::nullopt;
  double seconds = 0;
  for (size_t i = 0; i < fields.size(); ++i) {
    const auto number = number_in(fields[i], i + 1 == fields.size());
    if (!number || (i > 0 && *number >= 60)) return std::nullopt;
    seconds = seconds * 60 + *number;
  }
  return seconds;
}

std::optional<double> unit_seconds(const std::string& word) {
  static const std::map<char, double> kUnits = {
      {'s', 1}, {'m', 60}, {'h', 3600}};
  const auto unit = word.empty() ? kUnits.end() : kUnits.find(word.back());
  const bool has_unit = unit != kUnits.end();
  const auto number =
      number_in(has_unit ? word.substr(0, word.size() - 1) : word, true);
  if (!number) return std::nullopt;
  return *number * (has_unit ? unit->second : 1);
}

}  // namespace

std::optional<int64_t> parse_time_word(const std::string& word) {
  const bool is_clock = word.find(':') != std::string::npos;
  const auto seconds = is_clock ? clock_seconds(word) : unit_seconds(word);
  if (!seconds || *seconds > kMostSeconds) return std::nullopt;
  return std::llround(*seconds * 1e6);
}

}  // namespace corvane
