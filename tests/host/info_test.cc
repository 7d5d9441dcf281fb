// `corvane info` of captures, as its user meets it.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/small_capture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

Bytes AsBytes(const std::string& text) { return {text.begin(), text.end()}; }

class InfoTest : public ProgramTest {
 protected:
  ChildResult Info(const Bytes& content) {
    WriteFile(take_, content);
    return Corvane({"info", take_});
  }

  // Of the one object for this content.
  json InfoJson(const Bytes& content) {
    WriteFile(take_, content);
    const ChildResult run = Corvane({"info", "--json", take_});
    EXPECT_EQ(Lines(run.out).size(), 1U) << run.out;
    return json::parse(run.out);
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(InfoTest, ACaptureIsATableOfWhatItHolds) {
  const ChildResult run = Info(Capture(100));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, take_ +
                         "\n"
                         "  audio     0:02.1 in 100 frames\n"
                         "  format    2 channels at 48000 Hz\n"
                         "  size      9.8 KiB (10000 bytes)\n");
}

TEST_F(InfoTest, ATornTailIsNoFailureAndNamesWhatCutsItOff) {
  const ChildResult run = Info(Concat(Capture(100), Slice(FrameAt(3), 0, 40)));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_NE(run.out.find("  torn      40 bytes; cut off by:\n"
                         "            corvane finalize '" +
                         take_ + "'\n"),
            std::string::npos)
      << run.out;
}

TEST_F(InfoTest, TheFirstTenForeignRunsHaveTheirPlaces) {
  Bytes content = AsBytes("seven..");
  for (int i = 0; i < 12; ++i) {
    content = Concat(Concat(content, Capture(2)), AsBytes("xyz"));
  }
  content = Concat(Concat(content, Capture(10)), AsBytes("behind the end"));
  const ChildResult run = Info(content);
  EXPECT_EQ(run.status, 0) << run.err;
  const Words lines = Lines(run.out);
  ASSERT_EQ(lines.size(), 17U) << run.out;
  EXPECT_EQ(lines[4], "  foreign   43 bytes in 13 runs:");
  EXPECT_EQ(lines[5], "            7 bytes at 0");
  EXPECT_EQ(lines[6], "            3 bytes at 207");
  EXPECT_EQ(lines[14],
            "            3 bytes at " + std::to_string(207 + 8 * 203));
  EXPECT_EQ(lines[15], "            and 3 more");
  EXPECT_EQ(lines[16], "  behind    14 foreign bytes");
}

TEST_F(InfoTest, TheObjectHasTheFiguresAndEveryRun) {
  Bytes content = AsBytes("seven..");
  json places = {{{"offset", 0}, {"bytes", 7}}};
  for (int i = 0; i < 12; ++i) {
    content = Concat(content, Capture(2));
    places.push_back({{"offset", content.size()}, {"bytes", 3}});
    content = Concat(content, AsBytes("xyz"));
  }
  content = Concat(Concat(content, Capture(10)), Slice(FrameAt(3), 0, 40));
  const json expected = {{"path", take_},
                         {"frames", 34},
                         {"durationMs", FramesToMs(34, 48000)},
                         {"bytes", content.size()},
                         {"sampleRate", 48000},
                         {"channels", 2},
                         {"tornBytes", 40},
                         {"skippedBytes", 43},
                         {"trailingBytes", 0},
                         {"foreignRuns", places},
                         {"foreignRunCount", 13},
                         {"isCapture", true},
                         {"kind", "ADTS"},
                         {"needsRepair", false},
                         {"inUse", false},
                         {"inUseBy", nullptr},
                         {"error", nullptr}};
  EXPECT_EQ(InfoJson(content), expected);
  EXPECT_EQ(InfoJson(Concat(Capture(10), AsBytes("behind")))["trailingBytes"],
            6);
}

TEST_F(InfoTest, TheFiguresAreThoseThatFinalizeGives) {
  ASSERT_EQ(
      Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(88200), 44100)})
          .status,
      0);
  const Bytes whole = ReadFile(take_);
  const json info =
      InfoJson(Concat(AsBytes("front"), Slice(whole, 0, whole.size() - 3)));
  const ChildResult run = Corvane({"finalize", take_});
  ASSERT_EQ(run.status, 0) << run.err;
  const json sealed = json::parse(run.out);
  for (const char* figure : {"path", "durationMs", "sampleRate", "channels",
                             "tornBytes", "skippedBytes"}) {
    EXPECT_EQ(info[figure], sealed[figure]) << figure;
  }
  EXPECT_EQ(info["bytes"],
            sealed["bytes"].get<int>() + sealed["tornBytes"].get<int>());
}

TEST_F(InfoTest, FinalizeAndResumeSayTheSameOfTheSame) {
  const Bytes content = Concat(Concat(Capture(50), AsBytes("foreign")),
                               Concat(Capture(50), Slice(FrameAt(3), 0, 40)));
  WriteFile(take_, content);
  const std::string wav = MakeWav("in.wav", Sine(96000, 2), 48000, 2);
  const ChildResult resumed = Corvane({"resume", take_, "-i", wav});
  EXPECT_NE(resumed.err.find(
                take_ +
                ": found 100 whole AAC frames, 0:02.1 of audio; 40 torn bytes "
                "will be cut off; 7 foreign bytes between the frames will "
                "stay\n"),
            std::string::npos)
      << resumed.err;
  WriteFile(take_, content);
  const ChildResult sealed = Corvane({"finalize", take_});
  EXPECT_NE(sealed.err.find(take_ +
                            ": found 0:02.1 of audio; 40 torn bytes were cut "
                            "off; 7 foreign bytes between the frames stayed\n"),
            std::string::npos)
      << sealed.err;
  WriteFile(take_, Concat(Capture(50), {0xFF}));
  const ChildResult one = Corvane({"finalize", take_});
  EXPECT_NE(one.err.find("; 1 torn byte was cut off\n"), std::string::npos)
      << one.err;
  WriteFile(take_, Concat(Capture(50), AsBytes("?")));
  const ChildResult behind = Corvane({"resume", take_, "-i", wav});
  EXPECT_NE(behind.err.find("; nothing is torn; 1 foreign byte behind the last "
                            "frame will stay\n"),
            std::string::npos)
      << behind.err;
}

TEST_F(InfoTest, NothingIsChanged) {
  WriteFile(take_, Concat(Capture(20), Slice(FrameAt(3), 0, 40)));
  const Words names = ListDir(Path(""));
  const Bytes content = ReadFile(take_);
  struct stat before = {};
  ASSERT_EQ(stat(take_.c_str(), &before), 0);
  EXPECT_EQ(Corvane({"info", take_}).status, 0);
  EXPECT_EQ(Corvane({"info", "--json", take_}).status, 0);
  struct stat after = {};
  ASSERT_EQ(stat(take_.c_str(), &after), 0);
  EXPECT_EQ(ReadFile(take_), content);
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
  EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
  EXPECT_EQ(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
  EXPECT_EQ(ListDir(Path("")), names);
}

TEST_F(InfoTest, WhatMayOnlyBeReadIsLookedAt) {
  WriteFile(take_, Capture(20));
  ASSERT_EQ(chmod(take_.c_str(), S_IRUSR), 0);
  EXPECT_EQ(CorvaneUnprivileged({"info", take_}).status, 0);
}

TEST_F(InfoTest, FramesOfAnotherRateAreTold) {
  const ChildResult run = Info(Concat(Capture(20), FrameAt(4)));
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("  format    2 channels at 48000 Hz\n"
                         "            the last at 44100 Hz, by\n"
                         "            which the time is reckoned\n"),
            std::string::npos)
      << run.out;
}

TEST_F(InfoTest, EveryRowFitsFortyColumns) {
  Bytes content = Concat(Bytes(123456, 'x'), FrameAt(4));
  for (int i = 0; i < 12; ++i) {
    content = Concat(Concat(content, Capture(200)), AsBytes("x"));
  }
  content = Concat(content, Bytes(100000, 'x'));
  const ChildResult run = Info(content);
  EXPECT_EQ(run.status, 0) << run.err;
  for (const std::string& line : Lines(run.out)) {
    if (line == take_) continue;
    EXPECT_LE(line.size(), 40U) << line;
  }
}

// Terminals take the one for a new colour, and the other two bytes, as UTF-8,
// for the same; the first byte is no UTF-8.
TEST_F(InfoTest, ANameCannotSteerTheTerminal) {
  const std::string name = Path("-\xFF \x1B[31m\n\xC2\x9B é.aac");
  WriteFile(name, Capture(20));
  const ChildResult table = Corvane({"info", "--", name});
  EXPECT_EQ(table.status, 0) << table.err;
  EXPECT_EQ(Lines(table.out).front(),
            Path("-\\xff \\x1b[31m\\x0a\\xc2\\x9b é.aac"));
  const ChildResult object = Corvane({"info", "--json", "--", name});
  EXPECT_EQ(json::parse(object.out)["path"],
            Path("-\xEF\xBF\xBD \x1B[31m\n\xC2\x9B é.aac"));
}

}  // namespace
}  // namespace corvane_test
