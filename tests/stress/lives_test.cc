// Thousands of plugins, one after another, called at random while their worker
// runs and ended in four ways. Whatever the threads make of it, each call is
// answered once, in its turn and as is due, and nothing is left behind.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "stress/life.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/glib_log.h"

namespace corvane_test {
namespace {

constexpr int kMostActs = 20;

size_t Threads() { return ListDir("/proc/self/task").size(); }

// A joined thread is gone for its process a moment before it is for /proc.
bool ThreadsFallTo(size_t count) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (Threads() > count) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return Threads() == count;
}

class LivesTest : public testing::Test {
 protected:
  void LiveAndEndBy(End end) {
    const int lives = CountFromEnvironment("CORVANE_LIVES", 2000) / 4;
    LiveOnce(end, 0);  // what is allocated once and for all
    const std::vector<std::string> descriptors = OpenDescriptors();
    const size_t threads = Threads();
    for (int n = 1; n < lives && !HasFailure(); ++n) LiveOnce(end, n);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    EXPECT_TRUE(ThreadsFallTo(threads))
        << Threads() << " threads, not " << threads;
  }

 private:
  void LiveOnce(End end, int number) {
    SCOPED_TRACE("life " + std::to_string(number));
    Chance chance(4 * number + static_cast<int>(end));
    {
      Life life(&chance);
      for (int left = chance.Between(0, kMostActs); left > 0; --left) {
        life.Act();
      }
      life.EndBy(end);
    }
    for (const GlibLine& line : glib_.Take()) {
      EXPECT_TRUE(!line.domain && line.message.rfind("[Corvane] ", 0) == 0)
          << "not a line of the plugin: " << line;
    }
  }

  GlibLogCapture glib_;
};

TEST_F(LivesTest, AnIdlePluginHasAnsweredEveryCall) {
  LiveAndEndBy(End::kIdle);
}

TEST_F(LivesTest, NothingArrivesBehindAShutdownInMidWork) {
  LiveAndEndBy(End::kShutdown);
}

TEST_F(LivesTest, ADisposeInMidWorkLeavesNoCallUnanswered) {
  LiveAndEndBy(End::kDispose);
}

TEST_F(LivesTest, AReplacedMethodChannelLeavesNoCallUnanswered) {
  LiveAndEndBy(End::kReplace);
}

}  // namespace
}  // namespace corvane_test
