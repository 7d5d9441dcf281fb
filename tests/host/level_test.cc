// How loud audio is, in figures that are known beforehand.
#include "audio/level.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::ChannelLevel;
using corvane::dbfs;
using corvane::Level;

constexpr int kLevelRate = 48000;
constexpr int kLevelPieceMs = 20;

// A second of one channel that says for each frame what it is.
template <typename Wave>
Bytes SecondOf(Wave wave, double seconds = 1) {
  Bytes pcm;
  const auto frames = static_cast<int>(kLevelRate * seconds);
  for (int i = 0; i < frames; ++i) {
    const auto sample =
        static_cast<uint16_t>(static_cast<int16_t>(std::lround(wave(i))));
    pcm.push_back(static_cast<uint8_t>(sample & 0xff));
    pcm.push_back(static_cast<uint8_t>(sample >> 8));
  }
  return pcm;
}

Bytes SineOf(double peak, double seconds = 1) {
  return SecondOf(
      [peak](int i) {
        return peak * std::sin(i * 2 * M_PI * 997 / kLevelRate);
      },
      seconds);
}

Bytes Constant(int value, double seconds = 1) {
  return SecondOf([value](int) { return value; }, seconds);
}

// Channels side by side, each with its own audio.
Bytes Interleaved(const Bytes& left, const Bytes& right) {
  Bytes pcm;
  for (size_t i = 0; i < left.size(); i += 2) {
    pcm.insert(pcm.end(), {left[i], left[i + 1], right[i], right[i + 1]});
  }
  return pcm;
}

class LevelTest : public ::testing::Test {
 protected:
  void Hear(const Bytes& pcm) {
    for (const Bytes& piece :
         Chunks(pcm, kLevelRate / 1000 * kLevelPieceMs * 2)) {
      level_.Hear(piece.data(), piece.size());
    }
  }
  ChannelLevel Now() const { return level_.channels().at(0); }

  Level level_{{kLevelRate, 1}};
};

TEST_F(LevelTest, ASineShowsItsPeak) {
  for (const double db : {0.0, -1.0, -6.0, -20.0, -40.0, -60.0}) {
    Level level({kLevelRate, 1});
    const Bytes pcm = SineOf(32767 * std::pow(10, db / 20));
    level.Hear(pcm.data(), pcm.size());
    EXPECT_NEAR(dbfs(level.channels().at(0).peak), db, 0.15);
    EXPECT_NEAR(dbfs(level.channels().at(0).held), db, 0.15);
  }
}

TEST_F(LevelTest, FullScaleIsZeroAndNothingIsEndlesslyLow) {
  EXPECT_EQ(dbfs(32768), 0);
  EXPECT_NEAR(dbfs(1), -90.3, 0.01);
  EXPECT_TRUE(std::isinf(dbfs(0)) && dbfs(0) < 0);
  EXPECT_EQ(Now().peak, 0);
  Hear(Constant(-32768));
  EXPECT_EQ(Now().peak, 32768);
}

TEST_F(LevelTest, AConstantOffsetHasALevelAndIsNoSignal) {
  Hear(Constant(16384, 6));
  EXPECT_EQ(Now().peak, 16384);
  EXPECT_EQ(level_.still_s(), 6);
  EXPECT_EQ(level_.quiet_s(), 6);
}

TEST_F(LevelTest, EachChannelHasItsOwn) {
  Level level({kLevelRate, 2});
  const Bytes pcm = Interleaved(Constant(0), SineOf(3276.8));
  level.Hear(pcm.data(), pcm.size());
  ASSERT_EQ(level.channels().size(), 2U);
  EXPECT_EQ(level.channels()[0].held, 0);
  EXPECT_NEAR(dbfs(level.channels()[1].held), -20, 0.1);
  EXPECT_EQ(level.quiet_s(), 0) << "one channel is enough";
}

TEST_F(LevelTest, OnePeakIsShownForATenthAndHeldForASecondAndAHalf) {
  Hear(SineOf(30000, 0.05));
  Hear(SineOf(100, 0.05));
  EXPECT_GT(Now().peak, 29000);
  Hear(SineOf(100, 0.1));
  EXPECT_LE(Now().peak, 100);
  EXPECT_GT(Now().held, 29000);
  Hear(SineOf(100, 1.25));
  EXPECT_GT(Now().held, 29000);
  Hear(SineOf(100, 0.1));
  EXPECT_LE(Now().held, 100);
}

TEST_F(LevelTest, QuietBeginsBelow60DecibelsAndEndsWithASound) {
  Hear(SineOf(32.4, 6));
  EXPECT_EQ(level_.quiet_s(), 6);
  EXPECT_EQ(level_.still_s(), 0);
  Hear(SineOf(33.6));
  EXPECT_EQ(level_.quiet_s(), 0);
}

TEST_F(LevelTest, AnOffsetHidesNoSilence) {
  Hear(SecondOf([](int i) { return 400 + (i % 100 < 50 ? 20 : -20); }, 6));
  EXPECT_EQ(level_.quiet_s(), 6);
  EXPECT_EQ(level_.still_s(), 0);
}

TEST_F(LevelTest, DigitalZeroIsStillUntilTheFirstOtherSample) {
  Hear(Silence(kLevelRate * 7));
  EXPECT_EQ(level_.still_s(), 7);
  Hear(SecondOf([](int i) { return i == kLevelRate / 2 ? 1 : 0; }));
  EXPECT_NEAR(level_.still_s(), 0.5, 0.06);
  EXPECT_EQ(level_.quiet_s(), 8);
}

TEST_F(LevelTest, ThreeSamplesInARowAtFullScaleAreOneClip) {
  Hear(SineOf(32767));
  EXPECT_EQ(level_.clips(), 0) << "a waveform that just fits";
  Hear(SecondOf([](int i) { return i >= 100 && i < 102 ? 32767 : 0; }));
  EXPECT_EQ(level_.clips(), 0);
  Hear(SecondOf([](int i) { return i >= 100 && i < 109 ? 32767 : 0; }));
  EXPECT_EQ(level_.clips(), 1);
  Hear(SecondOf([](int i) { return i >= 100 && i < 103 ? -32768 : 0; }));
  EXPECT_EQ(level_.clips(), 2);
}

// The piece ends behind the second of them, and so does the block.
TEST_F(LevelTest, AClipIsOneAcrossTwoPieces) {
  constexpr int kBlock = kLevelRate / 20;
  Hear(SecondOf([](int i) { return i >= kBlock - 2 ? 32767 : 0; }, 0.05));
  EXPECT_EQ(level_.clips(), 0);
  Hear(SecondOf([](int i) { return i < 1 ? 32767 : 0; }, 0.05));
  EXPECT_EQ(level_.clips(), 1);
}

TEST_F(LevelTest, TheClippingOfOneChannelIsSeenBesideAnother) {
  Level level({kLevelRate, 2});
  const Bytes pcm = Interleaved(
      SineOf(1000), SecondOf([](int i) { return i % 1000 < 4 ? 32767 : 0; }));
  level.Hear(pcm.data(), pcm.size());
  EXPECT_EQ(level.clips(), 48);
}

TEST_F(LevelTest, PiecesOfAnySizeMakeNoDifference) {
  const Bytes pcm = Concat(Noise(kLevelRate), Silence(kLevelRate * 2));
  Level whole({kLevelRate, 1});
  whole.Hear(pcm.data(), pcm.size());
  Hear(pcm);
  EXPECT_EQ(Now().peak, whole.channels().at(0).peak);
  EXPECT_EQ(Now().held, whole.channels().at(0).held);
  EXPECT_EQ(level_.still_s(), whole.still_s());
  EXPECT_EQ(level_.clips(), whole.clips());
}

}  // namespace
}  // namespace corvane_test
