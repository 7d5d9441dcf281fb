#include "terminal/wording.h"

#include <glib.h>

#include <cstdio>

namespace corvane {
namespace {

template <typename... Args>
std::string format(const char* pattern, Args... args) {
  char text[64];
  std::snprintf(text, sizeof(text), pattern, args...);
  return text;
}

}  // namespace

std::string shell_word(const std::string& path) {
  const std::string word =
      !path.empty() && path.front() == '-' ? "./" + path : path;
  g_autofree gchar* quoted = g_shell_quote(word.c_str());
  return quoted;
}

std::string clock_tenths(int64_t milliseconds) {
  const long long tenths = milliseconds / 100;
  const long long seconds = tenths / 10;
  const long long hours = seconds / 3600;
  const long long minutes = seconds / 60 % 60;
  const std::string rest = format("%02lld.%lld", seconds % 60, tenths % 10);
  if (hours == 0) return format("%lld:", minutes) + rest;
  return format("%lld:%02lld:", hours, minutes) + rest;
}

std::string file_size(int64_t bytes) {
  const auto kib = static_cast<double>(bytes) / 1024;
  if (kib < 1000) return format("%.1f KiB", kib);
  if (kib < 1000 * 1024) return format("%.1f MiB", kib / 1024);
  return format("%.2f GiB", kib / 1024 / 1024);
}

std::string counted(int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string channels_at(const PcmFormat& format) {
  const std::string channels = format.channels == 0
                                   ? "a channel layout of their own"
                                   : counted(format.channels, "channel");
  return channels + " at " + std::to_string(format.sample_rate) + " Hz";
}

}  // namespace corvane
