#include "log_capture.h"

#include <gtest/gtest.h>

#include <utility>

LogCapture::LogCapture() : former_(g_log_set_default_handler(Catch, this)) {}

LogCapture::~LogCapture() {
  g_log_set_default_handler(former_, nullptr);
  EXPECT_THAT(lines_, testing::IsEmpty()) << "logged, but not expected";
}

std::vector<std::string> LogCapture::Take() {
  return std::exchange(lines_, {});
}

void LogCapture::Catch(const gchar*, GLogLevelFlags level, const gchar* message,
                       gpointer user_data) {
  const char* name = (level & G_LOG_LEVEL_CRITICAL) != 0  ? "critical"
                     : (level & G_LOG_LEVEL_WARNING) != 0 ? "warning"
                                                          : "other";
  static_cast<LogCapture*>(user_data)->lines_.push_back(std::string(name) +
                                                        ": " + message);
}

testing::Matcher<std::string> CriticalOf(const std::string& function) {
  // GLib writes the whole signature where the caller is C++.
  return testing::AllOf(testing::StartsWith("critical: "),
                        testing::HasSubstr(function + "("));
}
