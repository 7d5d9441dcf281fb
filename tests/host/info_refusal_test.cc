// `corvane info` of what is no capture, or can't be looked at.
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class InfoRefusalTest : public ProgramTest {
 protected:
  // It is said on standard error, and in the object.
  json ShouldName(const std::string& path, const std::string& reason) {
    const ChildResult table = Corvane({"info", path});
    ShouldFail(table, path + ": " + reason);
    EXPECT_EQ(table.out, "");
    const ChildResult object = Corvane({"info", "--json", path});
    ShouldFail(object, path + ": " + reason);
    json told = json::parse(object.out);
    EXPECT_EQ(told["path"], path);
    EXPECT_EQ(told["isCapture"], false);
    EXPECT_EQ(told["error"], reason);
    for (const char* key : {"frames", "durationMs", "bytes", "sampleRate",
                            "channels", "tornBytes", "skippedBytes"}) {
      EXPECT_TRUE(told.contains(key)) << key;
    }
    return told;
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(InfoRefusalTest, WhatIsNoFileWithSomethingInItIsNamed) {
  ShouldName(take_, "No such file or directory; check the name");
  ShouldName(Path("."), "this is a folder; name a file in it");
  ShouldName("/dev/null", "not a regular file; name one");
  WriteFile(take_, {});
  const json told =
      ShouldName(take_, "the file is empty: no audio was recorded into it");
  EXPECT_EQ(told["bytes"], 0);
}

// Opening it would wake whoever waits to write into it.
TEST_F(InfoRefusalTest, APipeIsNotEvenOpened) {
  ASSERT_EQ(mkfifo(take_.c_str(), S_IRUSR | S_IWUSR), 0);
  const int events = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  ASSERT_GE(events, 0);
  ASSERT_GE(inotify_add_watch(events, take_.c_str(), IN_OPEN), 0);
  ShouldName(take_, "not a regular file; name one");
  char event[sizeof(inotify_event) + NAME_MAX + 1];
  EXPECT_EQ(read(events, event, sizeof(event)), -1) << "it was opened";
  close(events);
}

TEST_F(InfoRefusalTest, WhatMayNotBeReadComesWithTheWayOut) {
  WriteFile(take_, {'x'});
  ASSERT_EQ(chmod(take_.c_str(), 0), 0);
  ShouldFail(CorvaneUnprivileged({"info", take_}),
             take_ +
                 ": Permission denied; make it readable first: chmod u+rw '" +
                 take_ + "'");
}

TEST_F(InfoRefusalTest, AFileWithoutAFrameIsNoCapture) {
  WriteFile(take_, Bytes(100, 'x'));
  const json told = ShouldName(take_,
                               "not a capture: there is no whole AAC frame in "
                               "its 100 bytes");
  EXPECT_EQ(told["frames"], 0);
  EXPECT_EQ(told["bytes"], 100);
  EXPECT_EQ(told["kind"], nullptr);
}

TEST_F(InfoRefusalTest, AFileOfZerosIsCalledOne) {
  WriteFile(take_, Bytes(300000, 0));
  const std::string reason =
      "not a capture: there is no whole AAC frame in its 300000 bytes, which "
      "are all zeros, as after a power cut";
  ShouldName(take_, reason);
  ShouldFail(Corvane({"finalize", take_}),
             take_ + ": " + reason + "; it was left alone");
  ShouldFail(Corvane({"resume", take_, "-i", MakeWav("in.wav", Sine(48000))}),
             take_ + ": " + reason + "; it was left alone");
}

TEST_F(InfoRefusalTest, OtherKindsOfFileHaveTheirNames) {
  const json wav = ShouldName(MakeWav("in.wav", Sine(48000)),
                              "it starts like WAV, not like an ADTS capture");
  EXPECT_EQ(wav["kind"], "WAV");
  EXPECT_EQ(wav["needsRepair"], false);
  EXPECT_EQ(wav["frames"], nullptr);
  WriteFile(take_, {0xFF, 0xFB, 0x90, 0x64, 0, 0, 0, 0});
  EXPECT_EQ(
      ShouldName(take_, "it starts like MP3, not like an ADTS capture")["kind"],
      "MP3");
  WriteFile(take_, {'f', 'L', 'a', 'C', 0, 0, 0, 34});
  EXPECT_EQ(ShouldName(take_,
                       "it starts like FLAC, not like an ADTS capture")["kind"],
            "FLAC");
}

TEST_F(InfoRefusalTest, AWavFileThatNeedsRepairIsNamedAsSuch) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  Bytes content = ReadFile(wav);
  std::fill_n(content.begin() + 40, 4, uint8_t{0});
  WriteFile(wav, content);
  const json told =
      ShouldName(wav,
                 "it starts like WAV, not like an ADTS capture; its header "
                 "names 0 of the 96000 bytes of audio in it, as when its "
                 "recorder died; repair it first with: corvane repair-wav '" +
                     wav + "'");
  EXPECT_EQ(told["needsRepair"], true);
  ASSERT_EQ(Corvane({"repair-wav", wav}).status, 0);
  ShouldName(wav, "it starts like WAV, not like an ADTS capture");
}

TEST_F(InfoRefusalTest, AWavFileThatWasCutShortIsNamedAsSuch) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  TruncateFile(wav, 1044);
  const json told = ShouldName(
      wav,
      "it starts like WAV, not like an ADTS capture; of the 96000 bytes of "
      "audio that its header names, 1000 are there: it was cut short, or is "
      "still being written");
  EXPECT_EQ(told["needsRepair"], false);
}

TEST_F(InfoRefusalTest, AHeaderThatWasNeverWrittenMayHaveBeenAWavFiles) {
  const Bytes content = Concat(Bytes(44, 0), Sine(1000));
  WriteFile(take_, content);
  const json told = ShouldName(
      take_,
      "not a capture: there is no whole AAC frame in its 2044 bytes; "
      "there are zeros where a WAV file has its header; if its "
      "recorder died, repair it first with: corvane repair-wav '" +
          take_ + "' -r HZ -c N");
  EXPECT_EQ(told["needsRepair"], false);  // that is not known
}

TEST_F(InfoRefusalTest, FramesThatMayBeChanceAreNoCapture) {
  const ChildResult run =
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000))});
  ASSERT_EQ(run.status, 0) << run.err;
  const Bytes frames = Slice(ReadFile(take_), 0, 500);
  WriteFile(take_, Concat(Concat(Bytes(9000, 'x'), frames), Bytes(9000, 'x')));
  const json told = json::parse(Corvane({"info", "--json", take_}).out);
  EXPECT_EQ(told["isCapture"], false);
  EXPECT_GT(told["frames"], 0);
  EXPECT_EQ(told["skippedBytes"], 9000);
}

TEST_F(InfoRefusalTest, OneThatFailsDoesNotHoldUpTheOthers) {
  const std::string last = Path("last.aac");
  ASSERT_EQ(
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000))}).status,
      0);
  WriteFile(last, ReadFile(take_));
  const std::string gone = Path("gone.aac");
  const ChildResult table = Corvane({"info", gone, take_, Path("."), last});
  ShouldFail(table, gone + ": No such file or directory; check the name");
  EXPECT_EQ(table.out.rfind(take_ + "\n", 0), 0U) << table.out;
  EXPECT_NE(table.out.find("\n\n" + last + "\n"), std::string::npos)
      << table.out;

  const Words lines =
      Lines(Corvane({"info", "--json", gone, take_, Path("."), last}).out);
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(json::parse(lines[0])["path"], gone);
  EXPECT_EQ(json::parse(lines[1])["isCapture"], true);
  EXPECT_EQ(json::parse(lines[2])["path"], Path("."));
  EXPECT_EQ(json::parse(lines[3])["path"], last);
}

TEST_F(InfoRefusalTest, AFullOutputFailsAndSaysSoOnce) {
  ASSERT_EQ(
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(48000))}).status,
      0);
  const std::string sentence =
      "the result could not be written to standard output: No space left on "
      "device; nothing was changed";
  for (const Words& words :
       {Words{"info", take_, take_}, Words{"info", "--json", take_, take_}}) {
    const ChildResult run = CorvaneInShell("", ">/dev/full", words);
    ShouldFail(run, sentence);
    EXPECT_EQ(Lines(run.err).size(), 1U) << run.err;
  }
}

TEST_F(InfoRefusalTest, AFileHasToBeNamed) {
  EXPECT_EQ(Corvane({"info"}).status, 2);
}

}  // namespace
}  // namespace corvane_test
