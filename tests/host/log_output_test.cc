// Each line once, in the order in which it was logged, whichever way it came.
#include "terminal/log_output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "host/record_fixture.h"
#include "support/files.h"

namespace corvane_test {
namespace {

class LogOutputTest : public ::testing::Test {
 protected:
  ~LogOutputTest() override { close(fd_); }

  // What GLib hands over for a message of no domain.
  void Glib(GLogLevelFlags level, const char* message,
            const char* domain = nullptr) {
    const GLogField fields[] = {
        {"MESSAGE", message, -1},
        {"GLIB_DOMAIN", domain != nullptr ? domain : "", -1}};
    log_.OnGlibMessage(level, fields, 2);
  }

  Words Written() const {
    const Bytes content = ReadFile(dir_.Path("log"));
    return Lines(std::string(content.begin(), content.end()));
  }

  const TempDir dir_;
  const int fd_ = open(dir_.Path("log").c_str(),
                       O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  corvane::Console console_{fd_};
  corvane::LogOutput log_{&console_};
};

TEST_F(LogOutputTest, ALineAndItsEventAreOne) {
  console_.SetVerbosity(corvane::Verbosity::kVerbose);
  Glib(G_LOG_LEVEL_WARNING, "[Corvane] disk trouble");
  log_.OnEvent("error", "disk trouble");
  log_.Flush();
  EXPECT_EQ(Written(), Words{"error: disk trouble"});
}

TEST_F(LogOutputTest, EqualLinesInARowAreCounted) {
  console_.SetVerbosity(corvane::Verbosity::kVerbose);
  for (int i = 0; i < 4; ++i) Glib(G_LOG_LEVEL_WARNING, "[Corvane] again");
  for (int i = 0; i < 3; ++i) log_.OnEvent("error", "again");
  log_.OnEvent("warning", "again");
  log_.OnEvent("error", "again");
  log_.OnEvent("error", "again");
  log_.Flush();
  EXPECT_EQ(Written(),
            Words({"error: again", "  (2 more of this line)", "warning: again",
                   "error: again", "  (1 more of this line)"}));
}

TEST_F(LogOutputTest, ALineWhoseEventNeverCameStandsBeforeTheNextOne) {
  Glib(G_LOG_LEVEL_WARNING, "[Corvane] failed to respond: no");
  Glib(G_LOG_LEVEL_MESSAGE, "[Corvane] start");
  log_.OnEvent("info", "start");
  EXPECT_EQ(Written(),
            Words({"warning: failed to respond: no", "info: start"}));
}

TEST_F(LogOutputTest, LinesThatStillWaitAreWrittenAtTheEnd) {
  Glib(G_LOG_LEVEL_MESSAGE, "[Corvane] closed");
  EXPECT_EQ(Written(), Words());
  log_.Flush();
  log_.Flush();
  EXPECT_EQ(Written(), Words{"info: closed"});
}

// Whoever called the plugin says what failed; the rest follows from it.
TEST_F(LogOutputTest, AFailureAndWhatFollowsFromItAreLeftToTheCaller) {
  log_.OnEvent("info", "start");
  log_.OnEvent("error", "append failed");
  log_.OnEvent("warning", "drain failed");
  log_.OnEvent("info", "closed");
  log_.Flush();
  log_.OnEvent("warning", "another call's");
  EXPECT_EQ(Written(), Words({"info: start", "warning: another call's"}));
}

TEST_F(LogOutputTest, QuietLeavesNoLineOfThePlugin) {
  console_.SetVerbosity(corvane::Verbosity::kQuiet);
  for (const char* level : {"info", "warning", "error"}) {
    log_.OnEvent(level, "said");
  }
  log_.Flush();
  EXPECT_EQ(Written(), Words());
}

// They come on the worker, between the lines of the plugin that they belong to.
TEST_F(LogOutputTest, RemarksOfLibavStandBetweenThePluginsLines) {
  Glib(G_LOG_LEVEL_MESSAGE, "[Corvane] start");
  Glib(G_LOG_LEVEL_MESSAGE, "too many bits", "libav");
  Glib(G_LOG_LEVEL_MESSAGE, "[Corvane] started");
  EXPECT_EQ(Written(), Words());
  log_.OnEvent("info", "start");
  log_.OnEvent("info", "started");
  EXPECT_EQ(Written(),
            Words({"info: start", "libav: too many bits", "info: started"}));
}

TEST_F(LogOutputTest, WhatOthersLogIsWrittenAtOnce) {
  Glib(G_LOG_LEVEL_WARNING, "trouble", "Elsewhere");
  const Words written = Written();
  ASSERT_EQ(written.size(), 1U);
  EXPECT_NE(written[0].find("Elsewhere-WARNING"), std::string::npos);
  EXPECT_NE(written[0].find("trouble"), std::string::npos);
}

TEST_F(LogOutputTest, TheTagInAnotherDomainMeansNothing) {
  Glib(G_LOG_LEVEL_WARNING, "[Corvane] not ours", "Elsewhere");
  EXPECT_EQ(Written().size(), 1U);
}

TEST_F(LogOutputTest, DebugMessagesAreDroppedUnlessAskedFor) {
  Glib(G_LOG_LEVEL_DEBUG, "details", "Elsewhere");
  EXPECT_EQ(Written(), Words());
}

// What G_MESSAGES_DEBUG=all does, which GLib reads only once from 2.80 on.
void AskForDebugMessages(bool asked) {
#if GLIB_CHECK_VERSION(2, 80, 0)
  const gchar* const all[] = {"all", nullptr};
  g_log_writer_default_set_debug_domains(asked ? all : nullptr);
#else
  ASSERT_EQ(asked ? setenv("G_MESSAGES_DEBUG", "all", 1)
                  : unsetenv("G_MESSAGES_DEBUG"),
            0);
#endif
}

// GLib itself would put them on standard output, among the figures.
TEST_F(LogOutputTest, DebugMessagesAskedForGoWhereTheLogGoes) {
  AskForDebugMessages(true);
  testing::internal::CaptureStdout();
  Glib(G_LOG_LEVEL_DEBUG, "details", "Elsewhere");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  AskForDebugMessages(false);
  ASSERT_EQ(Written().size(), 1U);
  EXPECT_NE(Written()[0].find("details"), std::string::npos) << Written()[0];
}

}  // namespace
}  // namespace corvane_test
