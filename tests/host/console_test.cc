// Whole lines and the live line on one descriptor.
#include "terminal/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>

#include "support/files.h"

namespace corvane_test {
namespace {

using corvane::Console;
using corvane::printable;

constexpr int kTerminalMs = 10 * 1000;

// A terminal without anybody at it.
class Terminal {
 public:
  explicit Terminal(int columns) {
    winsize size = {};
    size.ws_col = static_cast<unsigned short>(columns);
    if (openpty(&reader_, &fd_, nullptr, nullptr, &size) != 0) std::abort();
    setenv("TERM", "xterm", 1);
  }
  ~Terminal() {
    close(reader_);
    close(fd_);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  int fd() const { return fd_; }

  void Resize(int columns) {
    winsize size = {};
    size.ws_col = static_cast<unsigned short>(columns);
    if (ioctl(fd_, TIOCSWINSZ, &size) != 0) std::abort();
  }

  // The next `size` bytes, or those that came before nothing did for long: the
  // kernel passes a terminal's output on when it gets to it.
  std::string Text(size_t size) {
    std::string text;
    pollfd entry = {reader_, POLLIN, 0};
    while (text.size() < size && poll(&entry, 1, kTerminalMs) > 0) {
      char buffer[4096];
      const ssize_t got = read(reader_, buffer, sizeof(buffer));
      if (got <= 0) break;
      text.append(buffer, static_cast<size_t>(got));
    }
    return text;
  }

 private:
  int reader_ = -1;
  int fd_ = -1;
};

TEST(ConsoleTest, ControlCharactersAreWrittenOut) {
  EXPECT_EQ(printable("a\nb\tc\x1b[31m\x7f"), "a\\x0ab\\x09c\\x1b[31m\\x7f");
  EXPECT_EQ(printable("Grüße \xff"), "Grüße \xff");
}

TEST(ConsoleTest, ALineErasesTheLiveLineAndBringsItBackBelow) {
  Terminal terminal(80);
  Console console(terminal.fd());
  console.Live("0:01");
  console.Line("news");
  console.Live("");
  console.Line("more");
  const std::string shown =
      "\r\x1b[J0:01\r"
      "\r\x1b[Jnews\r\n0:01\r"
      "\r\x1b[J"
      "more\r\n";
  EXPECT_EQ(terminal.Text(shown.size()), shown);
}

TEST(ConsoleTest, AFileGetsWholeLinesOnly) {
  const TempDir dir;
  const int fd =
      open(dir.Path("log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  Console console(fd);
  console.Live("0:01");
  console.Line("news");
  close(fd);
  const Bytes content = ReadFile(dir.Path("log"));
  EXPECT_EQ(std::string(content.begin(), content.end()), "news\n");
}

TEST(ConsoleTest, TheWidthIsTheTerminalsAtThatMoment) {
  Terminal terminal(40);
  const Console console(terminal.fd());
  EXPECT_EQ(console.Columns(), 40);
  terminal.Resize(132);
  EXPECT_EQ(console.Columns(), 132);
  terminal.Resize(0);
  EXPECT_EQ(console.Columns(), 80);
}

}  // namespace
}  // namespace corvane_test
