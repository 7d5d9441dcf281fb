// Random sequences of calls against the plugin and against the model of what
// it promises, compared at every step. The plugin lives in a process of its
// own, which is killed now and then; another one goes on with its files.
#include <gtest/gtest.h>

#include <iostream>

#include "crash/walk_run.h"
#include "support/chance.h"

namespace corvane_test {
namespace {

constexpr int kStepsPerWalk = 50;

std::string Wrong(const Walk& walk) { return WalkRun(walk).Run(); }

// Leaves out what the failure doesn't need.
Walk Shrink(Walk walk) {
  for (size_t i = walk.size(); i-- > 0;) {
    Walk shorter = walk;
    shorter.erase(shorter.begin() + i);
    if (!Wrong(shorter).empty()) walk = shorter;
  }
  return walk;
}

Walk RandomWalk(int number) {
  Chance chance(number);
  Walk walk;
  for (int i = 1; i < kStepsPerWalk; ++i) walk.push_back(RandomStep(&chance));
  walk.push_back({Do::kRestart});  // closes what is open
  return walk;
}

// GoogleTest runs a suite of this name first: a process forks the faster the
// less the tests before have left in it.
TEST(RandomWalkDeathTest, PluginAndModelAgreeAtEveryStep) {
  const int steps = CountFromEnvironment("CORVANE_WALK_STEPS", 3000);
  int kills = 0;
  int inside = 0;
  for (int n = 0; n * kStepsPerWalk < steps; ++n) {
    WalkRun run(RandomWalk(n));
    const std::string wrong = run.Run();
    kills += run.kills();
    inside += run.kills_inside();
    if (wrong.empty()) continue;
    const Walk shortest = Shrink(RandomWalk(n));
    FAIL() << "walk " << n << " in short:\n"
           << ToString(shortest) << "\n"
           << Wrong(shortest) << "\nin full: " << wrong;
  }
  std::cout << steps << " steps, " << kills << " kills, " << inside
            << " of them with calls unanswered" << std::endl;
}

void Hold(const Walk& walk) { EXPECT_EQ(Wrong(walk), ""); }

// Walks as a failing one prints itself.
TEST(RandomWalkDeathTest, ATornTakeIsResumedAndTheNextStartMovesItAside) {
  Hold({{Do::kStart, 0, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kCancel, 0, 48000, 2, 0},
        {Do::kTear, 0, 48000, 2, 5},
        {Do::kResumePath, 2, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 9000},
        {Do::kFinalizePath, 0, 48000, 2, 2},
        {Do::kStart, 0, 48000, 2, 0}});
}

TEST(RandomWalkDeathTest, ATakeKilledInAWriteIsResumedByAnotherProcess) {
  Hold({{Do::kStart, 0, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kKill, 0, 48000, 2, 2, 30},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kStop, 0, 48000, 2, 0},
        {Do::kResumePath, 0, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kStop, 0, 48000, 2, 0}});
}

TEST(RandomWalkDeathTest, WithAllSlotsTakenAStartIsRefusedAndTheAudioStays) {
  Hold({{Do::kStart, 0, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kFillSlots, 0, 48000, 2, 0},
        {Do::kStart, 0, 48000, 2, 0},
        {Do::kStop, 0, 48000, 2, 0},
        {Do::kFinalizePath, 0, 48000, 2, 0}});
}

}  // namespace
}  // namespace corvane_test
