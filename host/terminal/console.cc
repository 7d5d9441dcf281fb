#include "terminal/console.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace corvane {
namespace {

// To the line's start, and everything behind it blank.
constexpr char kErase[] = "\r\x1b[J";

bool moves_cursor(int fd) {
  const char* term = std::getenv("TERM");
  return isatty(fd) == 1 && term != nullptr && std::string(term) != "dumb";
}

// Of a terminal that isn't the process's own nobody says.
bool is_in_background_of(int fd) {
  const pid_t foreground = tcgetpgrp(fd);
  return foreground > 0 && foreground != getpgrp();
}

// A file takes all that comes, or fails.
bool may_block(int fd) {
  struct stat file = {};
  return fstat(fd, &file) == 0 && !S_ISREG(file.st_mode);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7f) {
      result += c;
      continue;
    }
    char escaped[5];
    std::snprintf(escaped, sizeof(escaped), "\\x%02x", byte);
    result += escaped;
  }
  return result;
}

Console::Console(int fd)
    : fd_(fd),
      writer_(may_block(fd) ? std::make_unique<PatientWriter>(fd) : nullptr),
      has_live_line_(moves_cursor(fd)) {}

int Console::Columns() const {
  winsize size = {};
  if (ioctl(fd_, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

void Console::Line(std::string_view text) {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::string out = live_.empty() ? "" : kErase;
  out += printable(text);
  // One write, so that the line is never seen without the one below it.
  Write(out + "\n" + drawn());
}

void Console::Live(std::string text) {
  if (!has_live_line()) return;
  if (is_in_background_of(fd_)) text.clear();
  const std::lock_guard<std::mutex> lock(mutex_);
  if (text.empty() && live_.empty()) return;
  live_ = std::move(text);
  // One that is old by the time it is read helps nobody, but it has to go.
  if (writer_ != nullptr && writer_->is_behind() && !live_.empty()) return;
  Write(kErase + drawn());
}

// The cursor stays at its start: where a narrowed terminal wraps the line, all
// of it stands behind the cursor.
std::string Console::drawn() const { return live_.empty() ? "" : live_ + "\r"; }

void Console::Flush() {
  if (writer_ != nullptr) writer_->Flush(std::chrono::seconds(1));
}

void Console::Write(std::string_view text) {
  if (writer_ != nullptr) {
    writer_->Write(text);
    return;
  }
  while (!text.empty()) {
    const ssize_t written = write(fd_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace corvane
