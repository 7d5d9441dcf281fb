// Catches what GLib logs, so that criticals and warnings are results of a test
// like any other.
#ifndef CORVANE_TESTS_EMBEDDING_LOG_CAPTURE_H_
#define CORVANE_TESTS_EMBEDDING_LOG_CAPTURE_H_

#include <glib.h>
#include <gmock/gmock.h>

#include <string>
#include <vector>

// Holds back GLib's own writing while it lives. What nobody took fails the
// test when it ends. One at a time, on one thread.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The lines since the last Take, as "critical: text" or "warning: text".
  std::vector<std::string> Take();

 private:
  static void Catch(const gchar* domain, GLogLevelFlags level,
                    const gchar* message, gpointer user_data);

  std::vector<std::string> lines_;
  GLogFunc former_;
};

// A critical that names this function as the one that was called wrongly.
testing::Matcher<std::string> CriticalOf(const std::string& function);

#endif  // CORVANE_TESTS_EMBEDDING_LOG_CAPTURE_H_
