#include "terminal/log_output.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace corvane {
namespace {

// How the plugin's lines in the GLib log begin.
constexpr std::string_view kTag = "[Corvane] ";

std::string_view find_field(const GLogField* fields, gsize count,
                            const char* key) {
  for (gsize i = 0; i < count; ++i) {
    if (!g_str_equal(fields[i].key, key)) continue;
    const auto* text = static_cast<const char*>(fields[i].value);
    return fields[i].length < 0
               ? std::string_view(text)
               : std::string_view(text, static_cast<size_t>(fields[i].length));
  }
  return {};
}

}  // namespace

LogOutput::LogOutput(Console* console) : console_(console) {}

void LogOutput::TakeOverGlib() {
  g_log_set_writer_func(
      [](GLogLevelFlags level, const GLogField* fields, gsize count,
         gpointer self) {
        static_cast<LogOutput*>(self)->OnGlibMessage(level, fields, count);
        return G_LOG_WRITER_HANDLED;
      },
      this, nullptr);
}

void LogOutput::OnGlibMessage(GLogLevelFlags level, const GLogField* fields,
                              gsize count) {
  const std::string domain(find_field(fields, count, "GLIB_DOMAIN"));
  const std::string_view message = find_field(fields, count, "MESSAGE");
  if (domain.empty() && message.substr(0, kTag.size()) == kTag) {
    const std::lock_guard<std::mutex> lock(mutex_);
    waiting_.push_back({(level & G_LOG_LEVEL_MESSAGE) != 0 ? "info" : "warning",
                        std::string(message.substr(kTag.size()))});
    return;
  }
  if (domain == kLibavDomain) {
    const std::lock_guard<std::mutex> lock(mutex_);
    waiting_.push_back({kLibavDomain, std::string(message)});
    return;
  }
  if (domain == kAlsaDomain) {
    if (console_->is_verbose()) console_->Line("alsa: " + std::string(message));
    return;
  }
  if (g_log_writer_default_would_drop(
          level, domain.empty() ? nullptr : domain.c_str())) {
    return;
  }
  g_autofree gchar* text =
      g_log_writer_format_fields(level, fields, count, FALSE);
  // GLib sets its messages off with an empty line before and none after.
  console_->Line(g_strstrip(text));
}

void LogOutput::OnEvent(const std::string& level, const std::string& message) {
  std::deque<Waiting> missed;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto own = std::find_if(
        waiting_.begin(), waiting_.end(),
        [&](const Waiting& line) { return line.message == message; });
    if (own != waiting_.end()) {
      missed.assign(waiting_.begin(), own);
      waiting_.erase(waiting_.begin(), own + 1);
    }
  }
  for (const Waiting& line : missed) WriteLine(line.level, line.message);
  WriteLine(level, message);
}

void LogOutput::Flush() {
  std::deque<Waiting> missed;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    missed = std::exchange(waiting_, {});
  }
  for (const Waiting& line : missed) WriteLine(line.level, line.message);
  WriteRepeats();
  has_failed_ = false;
}

// Whoever called the plugin tells its user what failed; what is logged behind a
// failure is its consequences.
bool LogOutput::IsWanted(const std::string& level) {
  if (console_->is_verbose()) return true;
  has_failed_ = has_failed_ || level == "error";
  return !has_failed_ && console_->verbosity() == Verbosity::kNormal;
}

void LogOutput::WriteLine(const std::string& level,
                          const std::string& message) {
  if (!IsWanted(level)) return;
  std::string line = level + ": " + message;
  // The codec starts again behind every pause: that is no storm.
  if (level != "info" && line == last_line_) {
    ++repeats_;
    return;
  }
  WriteRepeats();
  console_->Line(line);
  last_line_ = std::move(line);
}

void LogOutput::WriteRepeats() {
  if (repeats_ > 0) {
    console_->Line("  (" + std::to_string(std::exchange(repeats_, 0)) +
                   " more of this line)");
  }
  last_line_.clear();
}

}  // namespace corvane
