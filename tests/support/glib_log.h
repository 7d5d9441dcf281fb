// Everything that goes to the GLib log, from any thread, taken over for the
// length of a test instead of being written to standard error.
#ifndef CORVANE_TESTS_SUPPORT_GLIB_LOG_H_
#define CORVANE_TESTS_SUPPORT_GLIB_LOG_H_

#include <glib.h>

#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace corvane_test {

struct GlibLine {
  std::optional<std::string> domain;  // empty for the null domain
  GLogLevelFlags level;
  std::string message;
};

bool operator==(const GlibLine& a, const GlibLine& b);
std::ostream& operator<<(std::ostream& out, const GlibLine& line);

// A line as the plugin writes it: null domain, the tag before the message.
GlibLine PluginMessage(const std::string& message);
GlibLine PluginWarning(const std::string& message);

// GLib has one default handler per process, so one capture lives at a time.
class GlibLogCapture {
 public:
  GlibLogCapture();
  ~GlibLogCapture();
  GlibLogCapture(const GlibLogCapture&) = delete;
  GlibLogCapture& operator=(const GlibLogCapture&) = delete;

  // The lines so far, oldest first; taking them empties the capture.
  std::vector<GlibLine> Lines() const;
  std::vector<GlibLine> Take();

 private:
  static void OnLine(const gchar* domain, GLogLevelFlags level,
                     const gchar* message, gpointer self);

  mutable std::mutex mutex_;
  std::vector<GlibLine> lines_;
  GLogFunc previous_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_GLIB_LOG_H_
