// The live line of work that has no figures of its own.
#include "terminal/waiting_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <stdlib.h>
#include <unistd.h>

#include <string>

namespace corvane_test {
namespace {

using corvane::Console;
using corvane::WaitingLine;
using std::chrono::hours;
using std::chrono::milliseconds;

constexpr int kSilenceMs = 60 * 1000;

// A terminal of 20 columns, read by the test.
class WaitingLineTest : public ::testing::Test {
 protected:
  WaitingLineTest() {
    setenv("TERM", "xterm", 1);
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = 20;
    EXPECT_EQ(openpty(&shown_, &terminal_, nullptr, nullptr, &size), 0);
  }
  ~WaitingLineTest() override {
    close(terminal_);
    close(shown_);
  }

  // Reads until `text` was shown.
  void Await(const std::string& text) {
    while (all_.find(text) == std::string::npos) {
      pollfd entry = {shown_, POLLIN, 0};
      ASSERT_EQ(poll(&entry, 1, kSilenceMs), 1) << all_;
      char buffer[4096];
      const ssize_t got = read(shown_, buffer, sizeof(buffer));
      ASSERT_GT(got, 0);
      all_.append(buffer, static_cast<size_t>(got));
    }
  }

  bool IsAnythingShown() const {
    pollfd entry = {shown_, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
  }

  int shown_ = -1;
  int terminal_ = -1;
  std::string all_;
};

TEST_F(WaitingLineTest, ShowsTheTimeGoneByAndLeavesNothing) {
  Console console(terminal_);
  {
    const WaitingLine line(&console, "sealing", milliseconds(0));
    Await("\r\x1b[Jsealing 0:00.0");
    Await("\r\x1b[Jsealing 0:00.2");
  }
  console.Line("end");
  // Nothing but the erased line stands before it.
  Await("\r\x1b[Jend\r\n");
}

TEST_F(WaitingLineTest, NeverReachesTheLastColumn) {
  Console console(terminal_);
  const WaitingLine line(&console, "sealing a capture", milliseconds(0));
  Await("\r\x1b[Jsealing a capture 0\r");
}

TEST_F(WaitingLineTest, ShortWorkShowsNothing) {
  Console console(terminal_);
  { const WaitingLine line(&console, "sealing", hours(1)); }
  EXPECT_FALSE(IsAnythingShown());
}

TEST_F(WaitingLineTest, APipeShowsNothing) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  Console console(ends[1]);
  { const WaitingLine line(&console, "sealing", milliseconds(0)); }
  close(ends[1]);
  char byte = 0;
  EXPECT_EQ(read(ends[0], &byte, 1), 0);
  close(ends[0]);
}

}  // namespace
}  // namespace corvane_test
