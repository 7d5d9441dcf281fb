// A take at a terminal: its keys, and the terminal as it is left.
#include <sched.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/small_screen.h"
#include "host/terminal_session.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

constexpr char kTellingItsPid[] =
    "bash -c 'echo \"[pid $$]\" >/dev/tty; exec \"$@\"' bash \"$@\"";

class TerminalTest : public ProgramTest {
 protected:
  // A minute of audio as it plays, but for what a test does to it.
  Words Recording(const Words& more = {}) {
    Words words = {CORVANE_PROGRAM,
                   "record",
                   Path("take.aac"),
                   "-i",
                   MakeWav("in.wav", Sine(48000 * 60)),
                   "--realtime"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
  }

  static void AwaitKeys(TerminalSession* session) {
    session->Await("corvane: ? shows the keys");
    session->Await("AAC encoder");
  }

  static void ShouldBeAsItWas(const TerminalSession& session) {
    EXPECT_EQ(session.Ways(), session.ways_before());
  }
};

TEST_F(TerminalTest, QStopsAndSeals) {
  TerminalSession session(Recording(), {});
  AwaitKeys(&session);
  EXPECT_NE(session.Ways(), session.ways_before());
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  ShouldBeAsItWas(session);
  const json result = json::parse(session.Out());
  EXPECT_EQ(result["endedBy"], "key");
  EXPECT_EQ(result["bytes"], FileSize(Path("take.aac")));
}

TEST_F(TerminalTest, SpacePausesAndGoesOn) {
  TerminalSession session(Recording(), {});
  AwaitKeys(&session);
  session.Type(" ");
  session.Await("paused at ");
  session.Await("PAUSED");
  session.Type(" ");
  session.Await("goes on at ");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(json::parse(session.Out())["endedBy"], "key");
}

TEST_F(TerminalTest, MMarksAndQuestionMarkShowsTheKeys) {
  TerminalSession session(Recording(), {});
  AwaitKeys(&session);
  session.Type("m?m");
  session.Await("marked ");
  session.Await(
      "keys: space pauses and goes on, m marks the moment, q stops and seals"
      "\r\n");
  session.Await("marked ");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(json::parse(session.Out())["marks"].size(), 2U);
}

TEST_F(TerminalTest, WhatAnArrowOrAnAltKeySendsIsNoKey) {
  TerminalSession session(Recording(), {});
  AwaitKeys(&session);
  session.Type("\x1bq");
  session.Await("0:01");
  session.Type("m");
  session.Await("marked ");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
}

TEST_F(TerminalTest, WhatWasTypedBeforeIsNotMeant) {
  TerminalSession::Setup setup;
  setup.typed_before = "q\nq";
  TerminalSession session(Recording(), setup);
  AwaitKeys(&session);
  session.Type("m");
  session.Await("marked ");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
}

TEST_F(TerminalTest, NothingOfTheLiveLineStaysBehind) {
  TerminalSession session(Recording(), {});
  AwaitKeys(&session);
  session.Await(" dB");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  SmallScreen screen(80);
  screen.Write(session.shown());
  EXPECT_EQ(screen.Text().find(" dB"), std::string::npos) << screen.Text();
}

// Standard error has a writer of its own, and the result doesn't wait for it
// by itself.
TEST_F(TerminalTest, TheResultOnTheSameTerminalComesBehindTheLiveLine) {
  TerminalSession::Setup setup;
  setup.script = "\"$@\" >/dev/tty";
  TerminalSession session(Recording(), setup);
  AwaitKeys(&session);
  session.Await(" dB");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  const std::string& shown = session.shown();
  const size_t result = shown.find("{\"path\"");
  ASSERT_NE(result, std::string::npos) << shown;
  EXPECT_LT(shown.rfind(" dB"), shown.rfind("\r\x1b[J", result)) << shown;
  EXPECT_EQ(shown.find("\x1b", result), std::string::npos) << shown;
}

TEST_F(TerminalTest, WithoutAMeterThereAreKeysAndNoLiveLine) {
  TerminalSession session(Recording({"--no-meter"}), {});
  AwaitKeys(&session);
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(session.shown().find('\x1b'), std::string::npos) << session.shown();
}

// A key that nobody sees work is worse than none.
TEST_F(TerminalTest, QuietTakesNoKeysAndSaysNothing) {
  TerminalSession session(Recording({"--quiet", "--duration", "1"}), {});
  while (!Exists(Path("take.aac"))) sched_yield();
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(json::parse(session.Out())["endedBy"], "duration");
  EXPECT_EQ(session.shown().find("keys"), std::string::npos);
}

TEST_F(TerminalTest, KeysWorkWhereStandardErrorIsAPipe) {
  TerminalSession::Setup setup;
  setup.script = "\"$@\" 2> >(cat >/dev/tty)";
  TerminalSession session(Recording(), setup);
  AwaitKeys(&session);
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  ShouldBeAsItWas(session);
  EXPECT_EQ(session.shown().find(" dB"), std::string::npos);
}

// Each way to end, and the status that the shell sees.
struct WayToEnd {
  const char* name;
  int signal;
  int status;
};

class WaysToEndTest : public TerminalTest,
                      public ::testing::WithParamInterface<WayToEnd> {};

TEST_P(WaysToEndTest, ASignalLeavesTheTerminalAsItWas) {
  TerminalSession::Setup setup;
  setup.script = kTellingItsPid;
  TerminalSession session(Recording(), setup);
  AwaitKeys(&session);
  session.Await(" dB");
  EXPECT_NE(session.Ways(), session.ways_before());
  session.Signal(GetParam().signal);
  EXPECT_EQ(session.AwaitEnd(), GetParam().status) << session.shown();
  ShouldBeAsItWas(session);
  const std::string& shown = session.shown();
  EXPECT_LT(shown.rfind(" dB"), shown.rfind("\r\x1b[J")) << shown;
}

INSTANTIATE_TEST_SUITE_P(
    Signals, WaysToEndTest,
    ::testing::Values(WayToEnd{"INT", SIGINT, 0}, WayToEnd{"TERM", SIGTERM, 0},
                      WayToEnd{"HUP", SIGHUP, 0},
                      WayToEnd{"QUIT", SIGQUIT, 128 + SIGQUIT},
                      WayToEnd{"ABRT", SIGABRT, 128 + SIGABRT},
                      WayToEnd{"BUS", SIGBUS, 128 + SIGBUS},
                      WayToEnd{"SEGV", SIGSEGV, 128 + SIGSEGV}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

TEST_F(TerminalTest, ATakeThatFailsLeavesTheTerminalAsItWas) {
  TerminalSession::Setup setup;
  setup.script = "ulimit -f 8; \"$@\"";
  TerminalSession session({CORVANE_PROGRAM, "record", Path("take.aac"), "-i",
                           MakeWav("in.wav", Noise(48000 * 5))},
                          setup);
  EXPECT_EQ(session.AwaitEnd(), 1);
  EXPECT_NE(session.shown().find("? shows the keys"), std::string::npos);
  ShouldBeAsItWas(session);
}

TEST_F(TerminalTest, WrongUsageLeavesTheTerminalAsItWas) {
  TerminalSession session(Recording({"--no-such-option"}), {});
  EXPECT_EQ(session.AwaitEnd(), 2);
  ShouldBeAsItWas(session);
}

TEST_F(TerminalTest, CtrlCOfTheTerminalStillStops) {
  TerminalSession::Setup setup;
  setup.script = "trap : INT; \"$@\"";
  TerminalSession session(Recording(), setup);
  AwaitKeys(&session);
  session.Type("\x03");
  EXPECT_EQ(session.AwaitEnd(), 0);
  ShouldBeAsItWas(session);
}

}  // namespace
}  // namespace corvane_test
