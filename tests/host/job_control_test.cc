// A take as a job of a shell: stopped, in the background, back again.
#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/terminal_session.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class JobControlTest : public ProgramTest {
 protected:
  // What the program gets from a shell with job control.
  TerminalSession::Setup Shell(const std::string& script) const {
    TerminalSession::Setup setup;
    setup.script = "set -m\n" + script;
    return setup;
  }
  Words Recording(int seconds) {
    return {CORVANE_PROGRAM,
            "record",
            Path("take.aac"),
            "-i",
            MakeWav("in.wav", Sine(48000 * static_cast<size_t>(seconds))),
            "--realtime"};
  }
};

TEST_F(JobControlTest, CtrlZGivesTheTerminalBackAndFgTakesItAgain) {
  TerminalSession session(Recording(60),
                          Shell("\"$@\"\n"
                                "echo \"[stopped $?]\" >/dev/tty; read -r\n"
                                "fg"));
  session.Await(" dB");
  session.Type("\x1a");
  session.Await("[stopped " + std::to_string(128 + SIGTSTP) + "]");
  EXPECT_EQ(session.Ways(), session.ways_before());
  const std::string& shown = session.shown();
  EXPECT_LT(shown.rfind(" dB"), shown.rfind("\r\x1b[J")) << shown;
  session.Type("\n");
  session.Await(" dB");
  EXPECT_NE(session.Ways(), session.ways_before());
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(session.Ways(), session.ways_before());
  EXPECT_EQ(
      json::parse(session.Out().substr(session.Out().find('{')))["endedBy"],
      "key");
}

// A shell that has job control doesn't take a job's standard input away.
TEST_F(JobControlTest, ABackgroundJobIsNeverStopped) {
  TerminalSession session(Recording(1), Shell("\"$@\" & wait $!"));
  EXPECT_EQ(session.AwaitEnd(), 0) << session.shown();
  EXPECT_EQ(session.Ways(), session.ways_before());
  EXPECT_EQ(session.shown().find(" dB"), std::string::npos)
      << "its live line would be where somebody types: " << session.shown();
  EXPECT_EQ(json::parse(session.Out())["endedBy"], "input");
}

TEST_F(JobControlTest, AJobThatComesToTheForegroundGetsItsKeys) {
  TerminalSession session(Recording(60), Shell("\"$@\" & read -r; fg"));
  session.Await("AAC encoder");
  session.Type("q\n");
  session.Await("? shows the keys");
  session.Type("q");
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(session.Ways(), session.ways_before());
}

TEST_F(JobControlTest, AStoppedJobGoesOnInTheBackgroundWithoutItsKeys) {
  TerminalSession session(Recording(3),
                          Shell("\"$@\"\n"
                                "echo '[stopped]' >/dev/tty\n"
                                "bg; wait $!; jobs -l >/dev/tty"));
  session.Await(" dB");
  session.Type("\x1a");
  session.Await("[stopped]");
  session.Await("stop end");
  session.AwaitEnd();
  EXPECT_EQ(session.Ways(), session.ways_before());
}

TEST_F(JobControlTest, UnderNohupThereAreNoKeys) {
  TerminalSession session(Recording(1), Shell("nohup \"$@\" >/dev/null"));
  EXPECT_EQ(session.AwaitEnd(), 0);
  EXPECT_EQ(session.shown().find("shows the keys"), std::string::npos);
  EXPECT_EQ(session.Ways(), session.ways_before());
}

}  // namespace
}  // namespace corvane_test
