// The fault layer proved on calls of this program: everything else in this
// folder rests on it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <future>
#include <string>
#include <thread>

#include "support/faults.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;

// Eight bytes to write; as long as it lives, this program is watched.
class InterposerTest : public testing::Test {
 protected:
  InterposerTest() {
    EXPECT_GE(fd_, 0);
    EXPECT_EQ(unlink(path_), 0);
  }
  ~InterposerTest() override {
    if (fd_ >= 0) {
      close(fd_);
    }
  }

  ssize_t Write() {
    errno = kBefore;
    return write(fd_, "12345678", 8);
  }
  int64_t FileSize() {
    struct stat status = {};
    return fstat(fd_, &status) == 0 ? status.st_size : -1;
  }

  static constexpr int kBefore = ECHILD;  // an errno that nothing here sets
  char path_[32] = "/tmp/corvane_faults_XXXXXX";
  int fd_ = mkstemp(path_);
  WatchProgram watch_;
};

TEST_F(InterposerTest, StrikesTheNthCallAlone) {
  Fault fault(On("write").Nth(2).Fail(ENOSPC));
  EXPECT_EQ(Write(), 8);
  EXPECT_EQ(errno, kBefore);
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(Write(), 8);
  EXPECT_EQ(FileSize(), 16);
  EXPECT_EQ(fault.seen(), 3);
  EXPECT_EQ(fault.struck(), 1);
}

TEST_F(InterposerTest, StrikesFromTheNthCallForGood) {
  Fault fault(On("write").From(2).Fail(EIO));
  EXPECT_EQ(Write(), 8);
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(fault.struck(), 2);
}

TEST_F(InterposerTest, StrikesTheFirstFewCalls) {
  Fault fault(On("write").Times(2).Fail(EINTR));
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(Write(), 8);
}

TEST_F(InterposerTest, FailsWithErrnoZero) {
  Fault fault(On("write").Fail(0));
  EXPECT_EQ(Write(), -1);
  EXPECT_EQ(errno, 0);
}

TEST_F(InterposerTest, ReturnsZeroAndLeavesErrnoAlone) {
  Fault fault(On("write").Return(0));
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(errno, kBefore);
}

TEST_F(InterposerTest, ShortensAWrite) {
  Fault fault(On("write").Nth(1).Accept(3));
  EXPECT_EQ(Write(), 3);
  EXPECT_EQ(FileSize(), 3);
  EXPECT_EQ(Write(), 8);
}

TEST_F(InterposerTest, StrikesOnAPathOrADescriptorOnly) {
  const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
  {
    Fault by_path(On("write").Path("/dev/null").Fail(EIO));
    EXPECT_EQ(Write(), 8);
    EXPECT_EQ(write(null, "x", 1), -1);
  }
  {
    Fault by_descriptor(On("write").Descriptor(null).Fail(EIO));
    EXPECT_EQ(Write(), 8);
    EXPECT_EQ(write(null, "x", 1), -1);
  }
  EXPECT_EQ(close(null), 0);
}

TEST_F(InterposerTest, NewestOfTwoFaultsDecides) {
  Fault older(On("write").Fail(EIO));
  {
    Fault newer(On("write").Fail(ENOSPC));
    Write();
    EXPECT_EQ(errno, ENOSPC);
  }
  Write();
  EXPECT_EQ(errno, EIO);
}

TEST_F(InterposerTest, HookStopsAThreadAtItsCall) {
  std::promise<void> reached;
  std::promise<void> go_on;
  Fault gate(On("fsync").Before([&](PluginCall&) {
    reached.set_value();
    go_on.get_future().wait();
  }));
  CallLog log;
  std::thread thread([this] { EXPECT_EQ(fsync(fd_), 0); });
  reached.get_future().wait();
  EXPECT_EQ(Write(), 8);  // others are not held up
  go_on.set_value();
  thread.join();
  EXPECT_THAT(log.Names(), ElementsAre("write", "fsync"));
}

TEST_F(InterposerTest, HooksOwnCallsAreNotWatched) {
  CallLog log;
  Fault hooked(On("fsync").Before([this](PluginCall&) { Write(); }));
  Fault no_write(On("write").Fail(EIO).MayMiss());
  EXPECT_EQ(fsync(fd_), 0);
  EXPECT_EQ(FileSize(), 8);
  EXPECT_EQ(no_write.seen(), 0);
}

TEST_F(InterposerTest, FailedCloseReleasesItsDescriptor) {
  const Held before = HeldNow();
  const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
  EXPECT_EQ(HeldNow().descriptors, before.descriptors + 1);
  Fault fault(On("close").Fail(EIO));
  EXPECT_EQ(close(fd), -1);
  EXPECT_EQ(errno, EIO);
  EXPECT_EQ(fcntl(fd, F_GETFD), -1);
  EXPECT_EQ(HeldNow(), before);
}

TEST_F(InterposerTest, RecordsWhatWasCalledWhereAndByWhom) {
  CallLog log;
  Fault fault(On("ftruncate").Fail(EACCES));
  const int fd = open("/dev/null", O_WRONLY | O_CLOEXEC);
  std::thread([fd] { EXPECT_EQ(write(fd, "xyz", 3), 3); }).join();
  EXPECT_EQ(ftruncate(fd, 5), -1);
  EXPECT_EQ(close(fd), 0);

  const std::vector<PluginCall> calls = log.calls();
  ASSERT_THAT(log.Names(), ElementsAre("open", "write", "ftruncate", "close"));
  EXPECT_EQ(calls[0].fd, fd);
  EXPECT_EQ(calls[0].thread, gettid());
  EXPECT_NE(calls[1].thread, gettid());
  EXPECT_EQ(calls[1].path, "/dev/null");
  EXPECT_EQ(calls[1].size, 3);
  EXPECT_EQ(calls[1].result, 3);
  EXPECT_EQ(calls[2].size, 5);
  EXPECT_EQ(calls[2].result, -1);
  EXPECT_EQ(calls[2].error, EACCES);
}

TEST_F(InterposerTest, EveryFileFunctionIsOverridden) {
  CallLog log;
  struct stat status = {};
  char byte = 0;
  free(getcwd(nullptr, 0));
  EXPECT_EQ(stat("/dev/null", &status), 0);
  EXPECT_EQ(rename("/nowhere/a", "/nowhere/b"), -1);
  EXPECT_EQ(fstat(fd_, &status), 0);
  EXPECT_EQ(pread(fd_, &byte, 1, 0), 0);
  FILE* stream = fopen("/dev/null", "r+b");
  EXPECT_EQ(fwrite("abcd", 1, 4, stream), 4U);
  EXPECT_EQ(fflush(stream), 0);
  EXPECT_EQ(fclose(stream), 0);
  EXPECT_THAT(log.Names(),
              ElementsAre("getcwd", "stat", "rename", "fstat", "pread", "fopen",
                          "fwrite", "fflush", "fclose"));
  EXPECT_EQ(log.calls()[6].path, "/dev/null");
}

TEST_F(InterposerTest, EveryAliasGoesByThePlainName) {
  CallLog log;
  struct stat64 status = {};
  char byte = 0;
  const int fd = open64("/dev/null", O_RDWR | O_CLOEXEC);
  EXPECT_EQ(fstat64(fd, &status), 0);
  EXPECT_EQ(stat64("/dev/null", &status), 0);
  EXPECT_EQ(pread64(fd, &byte, 1, 0), 0);
  EXPECT_EQ(ftruncate64(fd, 0), -1);
  EXPECT_EQ(close(fd), 0);
  EXPECT_EQ(fopen64("/nowhere/a", "rb"), nullptr);
  EXPECT_THAT(log.Names(), ElementsAre("open", "fstat", "stat", "pread",
                                       "ftruncate", "close", "fopen"));
}

TEST_F(InterposerTest, OtherLibrariesCallsPassThrough) {
  Fault everything(OnEverything().Fail(EIO).MayMiss());
  std::FILE* pipe = popen("exit 0", "r");  // opens and closes inside libc
  ASSERT_NE(pipe, nullptr);
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_EQ(everything.seen(), 0);
}

TEST_F(InterposerTest, FaultThatStruckNothingFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(Fault(On("rename").Fail(EIO)), "never struck");
}

}  // namespace
}  // namespace corvane_test
