// A thousand takes later nothing is left behind: no descriptor, no object, no
// memory.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "channel/overrides.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr int kTakes = 1000;

// What the heap's caches take and give back at random, in bytes: far less than
// one chunk kept by each take, or one codec by each plugin. Smaller losses are
// what a build with a leak detector finds.
constexpr size_t kNoise = 1 << 20;

class OwnershipTest : public ChannelTest {
 protected:
  // A take with every kind of reply and log line in it.
  void OneTake() {
    Post("start", CaptureArgs(path_, 48000, 1));
    for (const char* then : {"pause", "resume", "flush"}) {
      Post("append", pcm_);
      Post(then);
    }
    EXPECT_EQ(Stop().dropped_append_bytes, static_cast<int64_t>(pcm_.size()));
    Post("stop");
    Post("append", 7);
    Post("begin");
    AwaitReplies();
    TruncateFile(path_, 0);
    TakeTranscript();
    glib().Take();
  }

  // In memory: thousands of syncs are not what is tested.
  const TempDir memory_{"/dev/shm"};
  const std::string path_ = memory_.Path("take.aac");
  const Bytes pcm_ = Noise(1030);
};

// What the heap holds, in bytes; that of a sanitizer does not show here.
size_t HeapInUse() { return mallinfo2().uordblks; }

// The types derived from `base` that have been used so far, else `base` itself.
std::vector<GType> LeafTypes(GType base) {
  guint count = 0;
  g_autofree GType* children = g_type_children(base, &count);
  if (count == 0) return {base};
  return std::vector<GType>(children, children + count);
}

TEST_F(OwnershipTest, AThousandTakesLeaveNothingBehind) {
  OneTake();
  std::vector<std::unique_ptr<InstanceCount>> counts;
  for (const GType base :
       {fl_method_call_get_type(), fl_method_response_get_type(),
        fl_binary_messenger_response_handle_get_type()}) {
    for (const GType type : LeafTypes(base)) {
      counts.push_back(std::make_unique<InstanceCount>(type));
    }
  }
  OneTake();
  const std::vector<std::string> descriptors = OpenDescriptors();

  for (int take = 0; take < kTakes / 2; ++take) OneTake();
  const size_t heap = HeapInUse();
  for (int take = 0; take < kTakes / 2; ++take) OneTake();

  EXPECT_LT(HeapInUse(), heap + kNoise);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  int made = 0;
  for (const auto& count : counts) {
    EXPECT_EQ(count->alive(), 0u);
    made += count->made();
  }
  EXPECT_GT(made, kTakes * 11 * 3) << "calls, responses and handles";
}

TEST_F(OwnershipTest, AHundredPluginsLeaveNothingBehind) {
  const auto one_life = [this] {
    Start(path_);
    Append(pcm_);
    Restart();
    TakeTranscript();
    glib().Take();
    TruncateFile(path_, 0);
  };
  for (int life = 0; life < 50; ++life) one_life();
  const std::vector<std::string> descriptors = OpenDescriptors();
  const size_t heap = HeapInUse();
  for (int life = 0; life < 50; ++life) one_life();
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_LT(HeapInUse(), heap + kNoise);
}

// Records, events and maps hold texts: long ones show what is kept of them.
TEST_F(OwnershipTest, AThousandLongLinesAndErrorsLeaveNothingBehind) {
  const std::string long_path = memory_.Path(std::string(4000, 'x'));
  const auto fail = [&](int times) {
    for (int i = 0; i < times; ++i) {
      EXPECT_EQ(FinalizePath(long_path).native_code, ENAMETOOLONG);
      TakeTranscript();
      glib().Take();
    }
  };
  fail(100);
  const size_t heap = HeapInUse();
  fail(1000);
  EXPECT_LT(HeapInUse(), heap + kNoise);
}

// The working directory's name is asked for with every relative path.
TEST_F(OwnershipTest, AThousandRelativePathsLeaveNothingBehind) {
  std::string folder = memory_.path();
  for (int depth = 0; depth < 12; ++depth) {
    folder += "/" + std::string(250, 'd');
    ASSERT_EQ(mkdir(folder.c_str(), 0755), 0);
  }
  const WorkingDir here(folder);
  const Value args = CaptureArgs("a.aac", 48000, 1).With("outputPath", "b.aac");
  const auto refuse = [&](int times) {
    for (int i = 0; i < times; ++i) {
      EXPECT_EQ(Call("finalizePath", args).code, "INVALID_ARGS");
      TakeTranscript();
      glib().Take();
    }
  };
  refuse(100);
  const size_t heap = HeapInUse();
  refuse(1000);
  EXPECT_LT(HeapInUse(), heap + kNoise);
}

// So many that a few hundred bytes kept by each would show.
TEST_F(OwnershipTest, ThousandsOfIdlePluginsLeaveNothingBehind) {
  const auto live = [](int lives) {
    for (int life = 0; life < lives; ++life) {
      g_object_unref(g_object_new(corvane_plugin_get_type(), nullptr));
    }
  };
  live(100);
  const size_t heap = HeapInUse();
  live(4000);
  EXPECT_LT(HeapInUse(), heap + kNoise);
}

}  // namespace
}  // namespace corvane_test
