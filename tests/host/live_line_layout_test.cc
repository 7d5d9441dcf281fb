// The live line's text at any width. What it looks like stands in files that a
// person can read: tests/host/screens.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <sstream>

#include "host/small_screen.h"
#include "take/live_line.h"

namespace corvane_test {
namespace {

using corvane::format_live_line;
using corvane::LiveFigures;
using corvane::Style;

constexpr int64_t kLiveMib = 1024 * 1024;
constexpr int kScreenWidths[] = {200, 120, 80, 40, 20, 1};
constexpr Style kPlainStyle = {false, false};
constexpr Style kBlockStyle = {true, false};
constexpr Style kColourStyle = {true, true};

// Half an hour of an interview.
LiveFigures Interview() {
  LiveFigures figures;
  figures.has_begun = true;
  figures.audio_s = 1834;
  figures.elapsed_s = 1840;
  figures.bytes = 14 * kLiveMib;
  figures.room_s = 41 * 3600 + 60;
  figures.levels = {{4125, 8230}};  // -18 and -12 dBFS
  return figures;
}

LiveFigures Concert() {
  LiveFigures figures = Interview();
  figures.levels = {{4125, 8230}, {20675, 29204}};
  return figures;
}

LiveFigures Surround() {
  LiveFigures figures = Interview();
  figures.levels = {{4125, 8230}, {20675, 29204}, {0, 0},
                    {33, 100},    {32768, 32768}, {2000, 2000}};
  return figures;
}

// A quarter of a file, at many times its speed.
LiveFigures FileRead() {
  LiveFigures figures = Interview();
  figures.audio_s = 900;
  figures.total_s = 3600;
  figures.elapsed_s = 5;
  return figures;
}

LiveFigures With(LiveFigures figures,
                 const std::function<void(LiveFigures*)>& change) {
  change(&figures);
  return figures;
}

struct Moment {
  const char* name;
  LiveFigures figures;
};

const std::vector<Moment>& Moments() {
  static const std::vector<Moment> moments = {
      {"before any audio", {}},
      {"an interview", Interview()},
      {"a concert", Concert()},
      {"six channels", Surround()},
      {"a file", FileRead()},
      {"paused",
       With(Interview(), [](LiveFigures* f) { f->is_paused = true; })},
      {"too loud", With(Interview(),
                        [](LiveFigures* f) {
                          f->is_clipping = true;
                          f->levels = {{32768, 32768}};
                        })},
      {"silence", With(Interview(),
                       [](LiveFigures* f) {
                         f->quiet_s = 12.3;
                         f->levels = {{20, 25}};
                       })},
      {"no signal", With(Concert(),
                         [](LiveFigures* f) {
                           f->quiet_s = f->still_s = 754;
                           f->levels = {{0, 0}, {0, 0}};
                         })},
      {"paused and silent", With(Interview(),
                                 [](LiveFigures* f) {
                                   f->is_paused = true;
                                   f->quiet_s = 3671;
                                   f->levels = {{20, 25}};
                                 })},
      {"a source that stalls",
       With(Interview(), [](LiveFigures* f) { f->waiting_s = 7; })},
      {"hours, and little room", With(Interview(),
                                      [](LiveFigures* f) {
                                        f->audio_s = 11 * 3600 + 62;
                                        f->bytes = 1536 * kLiveMib;
                                        f->room_s = 571;
                                      })},
  };
  return moments;
}

// Every moment at every width, as a terminal shows it.
std::string Screens(const Style& style) {
  std::ostringstream text;
  for (const int columns : kScreenWidths) {
    text << "== " << columns << " columns\n";
    for (const Moment& moment : Moments()) {
      SmallScreen screen(columns);
      screen.Write(format_live_line(moment.figures, columns, style));
      text << moment.name << "\n|" << screen.Text() << "|\n";
    }
    text << "\n";
  }
  return text.str();
}

// What is drawn now stands beside it where it differs, to be looked at and, if
// it is meant so, to take its place.
void ShouldStandIn(const std::string& name, const std::string& screens) {
  std::ifstream file(CORVANE_SCREENS "/" + name);
  std::ostringstream kept;
  kept << file.rdbuf();
  if (kept.str() == screens) return;
  const std::string drawn = ::testing::TempDir() + name;
  std::ofstream(drawn) << screens;
  EXPECT_EQ(screens, kept.str()) << "drawn now: " << drawn;
}

TEST(LiveLineLayoutTest, BlocksAreDrawnAsTheyAreKept) {
  ShouldStandIn("live_line.txt", Screens(kBlockStyle));
}

TEST(LiveLineLayoutTest, PlainTextIsDrawnAsItIsKept) {
  const std::string screens = Screens(kPlainStyle);
  ShouldStandIn("live_line_ascii.txt", screens);
  for (const char c : screens) EXPECT_TRUE(c == '\n' || (c >= ' ' && c <= '~'));
}

// A colour as a letter in front of what has it.
TEST(LiveLineLayoutTest, ColoursAreDrawnAsTheyAreKept) {
  std::ostringstream text;
  for (const Moment& moment : Moments()) {
    SmallScreen screen(80, SmallScreen::Colours::kShown);
    screen.Write(format_live_line(moment.figures, 80, kColourStyle));
    text << moment.name << "\n|" << screen.Text() << "|\n";
    EXPECT_FALSE(screen.has_colour_left()) << moment.name;
  }
  ShouldStandIn("live_line_colours.txt", text.str());
}

TEST(LiveLineLayoutTest, ColoursChangeNothingElse) {
  for (const Moment& moment : Moments()) {
    for (int columns = 0; columns <= 220; ++columns) {
      SmallScreen coloured(columns);
      coloured.Write(format_live_line(moment.figures, columns, kColourStyle));
      SmallScreen plain(columns);
      plain.Write(format_live_line(moment.figures, columns, kBlockStyle));
      EXPECT_EQ(coloured.Text(), plain.Text());
    }
  }
}

TEST(LiveLineLayoutTest, NoWidthIsEverReached) {
  for (const Moment& moment : Moments()) {
    for (int columns = 0; columns <= 300; ++columns) {
      for (const Style& style : {kPlainStyle, kBlockStyle, kColourStyle}) {
        SmallScreen screen(1000);
        screen.Write(format_live_line(moment.figures, columns, style));
        EXPECT_LE(screen.widest(),
                  static_cast<size_t>(std::max(columns - 1, 0)))
            << moment.name << " at " << columns << ": " << screen.Text();
      }
    }
  }
}

TEST(LiveLineLayoutTest, TimeAndLevelStandFrom15ColumnsOn) {
  for (int columns = 15; columns <= 220; ++columns) {
    const std::string line =
        format_live_line(Interview(), columns, kPlainStyle);
    EXPECT_NE(line.find("30:34"), std::string::npos) << line;
    EXPECT_NE(line.find("-12 dB"), std::string::npos) << line;
  }
}

TEST(LiveLineLayoutTest, AWordGoesBeforeTheLevelWhereBothDontFit) {
  for (int columns = 18; columns <= 220; ++columns) {
    const std::string line = format_live_line(
        With(Interview(), [](LiveFigures* f) { f->still_s = 5.01; }), columns,
        kPlainStyle);
    EXPECT_NE(line.find("NO SIGNAL"), std::string::npos) << line;
  }
}

TEST(LiveLineLayoutTest, FiveSecondsOfSilenceAreNotYetAWord) {
  const std::string line = format_live_line(
      With(Interview(), [](LiveFigures* f) { f->quiet_s = f->still_s = 5; }),
      120, kPlainStyle);
  EXPECT_EQ(line, format_live_line(Interview(), 120, kPlainStyle));
}

TEST(LiveLineLayoutTest, MoreAudioThanPromisedLeavesTheBarFull) {
  const std::string line = format_live_line(
      With(FileRead(), [](LiveFigures* f) { f->audio_s = 4000; }), 120,
      kPlainStyle);
  EXPECT_EQ(line.rfind("[======", 0), 0U) << line;
  EXPECT_NE(line.find("=]  1:06:40"), std::string::npos) << line;
  EXPECT_NE(line.find("0:00 left"), std::string::npos) << line;
}

TEST(LiveLineLayoutTest, RoomIsToldRoughly) {
  EXPECT_EQ(corvane::rough_time(0), "0:00");
  EXPECT_EQ(corvane::rough_time(599.9), "9:59");
  EXPECT_EQ(corvane::rough_time(600), "10 min");
  EXPECT_EQ(corvane::rough_time(3599), "59 min");
  EXPECT_EQ(corvane::rough_time(3600), "1 h");
  EXPECT_EQ(corvane::rough_time(48 * 3600 - 1), "47 h");
  EXPECT_EQ(corvane::rough_time(48 * 3600), "2 days");
}

}  // namespace
}  // namespace corvane_test
