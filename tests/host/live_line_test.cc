// What a terminal shows while a take runs.
#include <chrono>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using std::chrono::steady_clock;

constexpr char kErase[] = "\r\x1b[J";

// The pieces of a text between the separators.
Words Split(const std::string& text, const std::string& separator) {
  Words pieces;
  size_t from = 0;
  for (size_t at = 0; (at = text.find(separator, from)) != std::string::npos;
       from = at + separator.size()) {
    pieces.push_back(text.substr(from, at - from));
  }
  pieces.push_back(text.substr(from));
  return pieces;
}

// A text as a terminal leaves it standing: erased lines are gone.
Words Standing(const std::string& shown) {
  Words lines;
  for (const std::string& line : Split(shown, "\r\n")) {
    lines.push_back(Split(line, kErase).back());
  }
  return lines;
}

class LiveLineTest : public ProgramTest,
                     public ::testing::WithParamInterface<int> {
 protected:
  // Half a second of audio as it plays, on a terminal.
  ChildResult RunOnTerminal(int columns, const std::string& term = "xterm") {
    ChildSetup setup;
    setup.terminal_columns = columns;
    setup.environment["TERM"] = term;
    setup.environment["LC_ALL"] = "C";
    setup.environment["NO_COLOR"] = "1";
    return Corvane({"record", Path("take.aac"), "-i",
                    MakeWav("in.wav", Sine(24000)), "--realtime"},
                   setup);
  }
};

TEST_P(LiveLineTest, NoStateOfItReachesTheLastColumn) {
  const auto before = steady_clock::now();
  const ChildResult run = RunOnTerminal(GetParam());
  const auto took = steady_clock::now() - before;
  ASSERT_EQ(run.status, 0) << run.err;
  const Words states = Split(run.err, kErase);
  int64_t live_states = 0;
  std::string last;
  for (const std::string& state : states) {
    // A log line ends in a line break and is as long as it is.
    if (state.find('\n') != std::string::npos) continue;
    if (!state.empty()) {
      ++live_states;
      last = state;
    }
    EXPECT_LE(state.size(), static_cast<size_t>(GetParam())) << state;
  }
  EXPECT_GE(live_states, 1) << run.err;
  EXPECT_NE(last.find("0:00 "), std::string::npos) << last;
  EXPECT_NE(last.find("-6 dB"), std::string::npos) << last;
  EXPECT_EQ(last.find(" [=") != std::string::npos, GetParam() >= 40) << last;
  EXPECT_EQ(last.find("iB  0:00 left") != std::string::npos, GetParam() > 40)
      << last;
  EXPECT_LE(live_states, took / std::chrono::milliseconds(100)) << run.err;
}

TEST_P(LiveLineTest, OnlyTheLogStaysBehind) {
  const ChildResult run = RunOnTerminal(GetParam());
  ASSERT_EQ(run.status, 0) << run.err;
  const Words standing = Standing(run.err);
  ASSERT_EQ(standing.size(), 6U) << run.err;
  for (size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(standing[i].rfind("info: ", 0), 0U) << standing[i];
  }
  EXPECT_EQ(standing.back(), "");
}

INSTANTIATE_TEST_SUITE_P(Columns, LiveLineTest,
                         ::testing::Values(20, 40, 80, 120, 200));

TEST_F(LiveLineTest, ADumbTerminalShowsTheLogAlone) {
  const ChildResult run = RunOnTerminal(80, "dumb");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err.find('\x1b'), std::string::npos) << run.err;
  EXPECT_EQ(Split(run.err, "\r\n").size(), 6U) << run.err;
}

TEST_F(LiveLineTest, APipeShowsTheLogAlone) {
  const ChildResult run =
      Corvane({"record", Path("take.aac"), "-i", MakeWav("in.wav", Sine(24000)),
               "--realtime"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err.find_first_of("\r\x1b"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace corvane_test
