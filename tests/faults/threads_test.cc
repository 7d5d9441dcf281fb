// The plugin has one thread of its own, and every file and codec call is made
// there: the main thread stays free, but for the close that dispose makes.
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::IsSupersetOf;

std::set<pid_t> Threads() {
  std::set<pid_t> threads;
  for (const auto& entry :
       std::filesystem::directory_iterator("/proc/self/task")) {
    threads.insert(std::stoi(entry.path().filename()));
  }
  return threads;
}

// The threads that were not there before.
std::set<pid_t> NewSince(const std::set<pid_t>& before) {
  std::set<pid_t> threads = Threads();
  for (const pid_t thread : before) {
    threads.erase(thread);
  }
  return threads;
}

// A joined thread is gone for its process a moment before it is for /proc.
bool GoesAway(pid_t thread) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (Threads().count(thread) > 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

class ThreadsTest : public FaultsTest {
 protected:
  // The one thread that made these calls.
  static pid_t OnlyThread(const std::vector<PluginCall>& calls) {
    EXPECT_FALSE(calls.empty());
    const pid_t thread = calls.empty() ? 0 : calls.front().thread;
    EXPECT_THAT(calls, Each(Field(&PluginCall::thread, thread)));
    return thread;
  }

  const pid_t main_ = gettid();
};

TEST_F(ThreadsTest, RegisteringThePluginAddsOneThread) {
  Shutdown();
  const std::set<pid_t> before = Threads();
  Restart();
  CallLog log;
  Start(Path("take.aac"));
  const pid_t worker = OnlyThread(log.calls());
  EXPECT_THAT(NewSince(before), ElementsAre(worker));
}

TEST_F(ThreadsTest, WholeTakeAddsNoOtherThread) {
  const std::set<pid_t> before = Threads();
  Start(Path("take.aac"));
  Append(Sine(10 * kFrameSamples));
  EXPECT_THAT(NewSince(before), IsEmpty());
  Stop();
  EXPECT_THAT(NewSince(before), IsEmpty());
}

TEST_F(ThreadsTest, WholeTakeIsMadeByTheWorkerAlone) {
  const std::string path = Path("take.aac");
  WriteFile(path, {'o', 'l', 'd'});
  CallLog log;
  Start(path);
  for (int i = 0; i < 5; ++i) {
    Append(Sine(1500));
  }
  Pause();
  Append(Sine(10));
  Resume();
  Append(Sine(3000));
  Flush();
  AppendToFile(path, {0xFF});  // gives the seal something to cut
  Fault no_more(On("write").Fail(ENOSPC));
  EXPECT_EQ(Stop().kind, Reply::Kind::kFigures);

  EXPECT_NE(OnlyThread(log.calls()), main_);
  EXPECT_THAT(log.Names(), IsSupersetOf({"stat",
                                         "rename",
                                         "open",
                                         "write",
                                         "fsync",
                                         "close",
                                         "fstat",
                                         "pread",
                                         "ftruncate",
                                         "avcodec_find_encoder_by_name",
                                         "avcodec_alloc_context3",
                                         "av_frame_alloc",
                                         "av_packet_alloc",
                                         "avcodec_open2",
                                         "av_channel_layout_copy",
                                         "av_frame_get_buffer",
                                         "av_frame_make_writable",
                                         "avcodec_send_frame",
                                         "avcodec_receive_packet",
                                         "avcodec_free_context",
                                         "av_frame_free",
                                         "av_packet_free"}));
}

TEST_F(ThreadsTest, FailedCallsAreAnsweredByTheWorkerToo) {
  CallLog log;
  Fault no_open(On("open").Nth(1).Fail(EACCES));
  Start(Path("take.aac"));
  Start(Path("take.aac"));
  Fault no_codec(On("avcodec_open2").Fail(EINVAL));
  Append(Sine(1));
  Cancel();
  EXPECT_NE(OnlyThread(log.calls()), main_);
}

TEST_F(ThreadsTest, DisposeClosesOnTheMainThreadBehindTheWorker) {
  CallLog log;
  const std::string path = Begin();
  Append(Sine(3 * kFrameSamples));
  const pid_t worker = OnlyThread(log.calls());
  const size_t calls_before = log.calls().size();
  bool worker_is_gone = false;
  Fault watch(On("avcodec_send_frame").Nth(1).Before([&](PluginCall&) {
    worker_is_gone = GoesAway(worker);
  }));
  Shutdown();
  EXPECT_TRUE(worker_is_gone);

  std::vector<PluginCall> calls = log.calls();
  calls.erase(calls.begin(),
              calls.begin() + static_cast<ptrdiff_t>(calls_before));
  EXPECT_EQ(OnlyThread(calls), main_);
  ASSERT_GE(calls.size(), 2U);
  EXPECT_STREQ(calls.front().name, "avcodec_send_frame");
  EXPECT_EQ(calls.front().size, 0);  // the flush
  EXPECT_STREQ(calls[calls.size() - 2].name, "fsync");
  EXPECT_STREQ(calls.back().name, "close");
  EXPECT_EQ(calls.back().path, path);
}

TEST_F(ThreadsTest, CallsQueuedAtDisposeAreStillMadeByTheWorker) {
  CallLog log;
  Begin();
  const pid_t worker = OnlyThread(log.calls());
  for (int i = 0; i < 50; ++i) {
    Post("append", Sine(kFrameSamples));
  }
  Shutdown();
  // 50 frames from the worker, the flush from dispose.
  const std::vector<PluginCall> sent = log.Of("avcodec_send_frame");
  ASSERT_EQ(sent.size(), 51U);
  EXPECT_EQ(OnlyThread({sent.begin(), sent.end() - 1}), worker);
  EXPECT_EQ(sent.back().thread, main_);
}

// The one look at the file system that checks of arguments need.
TEST_F(ThreadsTest, WorkingDirectoryIsAskedForOnTheMainThread) {
  const WorkingDir here(Path("."));
  const Value args = CaptureArgs("a.aac", 48000, 1).With("outputPath", "b.aac");
  CallLog log;
  EXPECT_EQ(Call("finalizePath", args).code, "INVALID_ARGS");
  EXPECT_EQ(log.Names(), (Lines{"getcwd", "getcwd"}));
  EXPECT_EQ(OnlyThread(log.calls()), main_);
}

TEST_F(ThreadsTest, UnknownWorkingDirectoryCountsAsTheRoot) {
  const WorkingDir here(Path("."));
  const Value args = CaptureArgs("a.aac", 48000, 1);
  Fault fault(On("getcwd").Fail(ENOENT));
  EXPECT_EQ(Call("finalizePath", args.With("outputPath", Path("a.aac"))).code,
            "INVALID_ARGS");
  EXPECT_NE(Call("finalizePath", args.With("outputPath", "/a.aac")).code,
            "INVALID_ARGS");
}

}  // namespace
}  // namespace corvane_test
