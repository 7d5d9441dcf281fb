#include "support/glib_log.h"

#include <utility>

namespace corvane_test {

bool operator==(const GlibLine& a, const GlibLine& b) {
  return a.domain == b.domain && a.level == b.level && a.message == b.message;
}

std::ostream& operator<<(std::ostream& out, const GlibLine& line) {
  return out << "domain " << line.domain.value_or("null") << ", level "
             << line.level << ": " << line.message;
}

GlibLine PluginMessage(const std::string& message) {
  return {std::nullopt, G_LOG_LEVEL_MESSAGE, "[Corvane] " + message};
}

GlibLine PluginWarning(const std::string& message) {
  return {std::nullopt, G_LOG_LEVEL_WARNING, "[Corvane] " + message};
}

GlibLogCapture::GlibLogCapture()
    : previous_(g_log_set_default_handler(OnLine, this)) {}

GlibLogCapture::~GlibLogCapture() {
  // g_log_default_handler() ignores its user data, so none is kept.
  g_log_set_default_handler(previous_, nullptr);
}

std::vector<GlibLine> GlibLogCapture::Lines() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return lines_;
}

std::vector<GlibLine> GlibLogCapture::Take() {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(lines_, {});
}

void GlibLogCapture::OnLine(const gchar* domain, GLogLevelFlags level,
                            const gchar* message, gpointer self) {
  auto* capture = static_cast<GlibLogCapture*>(self);
  GlibLine line;
  if (domain != nullptr) line.domain = domain;
  line.level = static_cast<GLogLevelFlags>(level & G_LOG_LEVEL_MASK);
  line.message = message;
  const std::lock_guard<std::mutex> lock(capture->mutex_);
  capture->lines_.push_back(std::move(line));
}

}  // namespace corvane_test
