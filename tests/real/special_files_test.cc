// What is no file as a capture path: devices, sockets and FIFOs. Every open is
// for reading and writing, so none of them waits for another end; a write into
// a full FIFO does, on the worker alone.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <future>

#include "real/real_fixture.h"

namespace corvane_test {
namespace {

class RealSpecialFilesTest : public RealTest {
 protected:
  // A file that takes no sync: recording works, sealing does not.
  void ExpectNothingCanBeSealed(const std::string& path) {
    const Reply not_sealed =
        ErrnoError("FINALIZE_FAILED", "sealing capture failed", path, EINVAL);
    TakeTranscript();
    FinalizePath(path);
    ExpectFailed("finalizePath", not_sealed,
                 {SealStartLine(path, 0, "finalizePath")});
    FinalizeWav(path);
    ExpectFailed("finalizeWavOnly",
                 ErrnoError("FINALIZE_FAILED", kPatch, path, EINVAL));
    ResumePath(path);
    ExpectTranscript(
        {ResumeLine(path, 0, 0), Answer("resumePath", NullReply())});
    AppendAll(ChunksFor(3));
    TakeTranscript();
    Flush();
    ExpectFailed("flush",
                 ErrnoError("WRITE_FAILED", "flush failed", path, EINVAL));
    Stop();
    ExpectFailed("stop", not_sealed,
                 {CloseStepLine("sync", path, EINVAL),
                  ClosedLine("stop", path, 4), SealStartLine(path)});
  }
};

TEST_F(RealSpecialFilesTest, DevicesThatSwallowAllAreRecordedButNotSealed) {
  for (const char* device : {"/dev/null", "/dev/zero"}) {
    SCOPED_TRACE(device);
    EXPECT_EQ(Start(device), NullReply());
    EXPECT_EQ(Cancel(), NullReply());
    ExpectNothingCanBeSealed(device);
    struct stat status;
    EXPECT_EQ(stat(device, &status), 0) << "a device is not moved aside";
  }
}

TEST_F(RealSpecialFilesTest, ASocketIsRefused) {
  const WorkingDir here(Path(""));  // a socket's path is short
  const int socket_fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, "take.aac");
  ASSERT_EQ(
      bind(socket_fd, reinterpret_cast<sockaddr*>(&address), sizeof address),
      0);
  ExpectRefused("take.aac", ENXIO);
  close(socket_fd);
}

class RealFifoTest : public RealSpecialFilesTest {
 protected:
  static constexpr int kCapacity = 4096;

  RealFifoTest() { mkfifo(fifo_.c_str(), 0600); }

  // Starts a take into the FIFO and appends more than it holds; returns when
  // the worker has written all that fits: the frame that is next doesn't, and
  // its write cannot return.
  void RecordUntilTheFifoIsFull() {
    Start(fifo_);
    const int end = open(fifo_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(fcntl(end, F_SETPIPE_SZ, kCapacity), kCapacity);
    close(end);
    while (FrameOffset(frames_, fit_ + 1) <= kCapacity) ++fit_;
    ASSERT_LT(fit_ + 2, chunks_.size());
    for (const Bytes& chunk : chunks_) {
      engine().Invoke("append", Value(chunk).get(),
                      [this](FlMethodResponse*) { ++answered_; });
    }
    while (answered_ <= fit_ || (answered_ == fit_ + 1 && !WaitsInWrite())) {
      DispatchPending();
    }
    EXPECT_EQ(answered_, fit_ + 1) << "the worker went on without a reader";
  }

  // Whether a thread of this process is held up in a write, as the kernel names
  // the function in which it sleeps (proc(5)); the number of its call
  // would be another for a program that is emulated.
  static bool WaitsInWrite() {
    for (const std::string& thread : ListDir("/proc/self/task")) {
      std::ifstream place("/proc/self/task/" + thread + "/wchan");
      std::string function;
      place >> function;
      if (function.find("pipe_write") != std::string::npos) return true;
    }
    return false;
  }

  // Opens the other end and reads to the end of the stream, on a thread.
  std::future<Bytes> ReadTheOtherEnd() const {
    const int end = open(fifo_.c_str(), O_RDONLY | O_CLOEXEC);
    return std::async(std::launch::async, [end] {
      Bytes all;
      uint8_t buffer[kCapacity];
      ssize_t got;
      while ((got = read(end, buffer, sizeof buffer)) > 0) {
        all.insert(all.end(), buffer, buffer + got);
      }
      close(end);
      return all;
    });
  }

  const std::string fifo_ = Path("fifo");
  const std::vector<Bytes> chunks_ = ChunksFor(60);
  const std::vector<Bytes> frames_ = FramesOf(chunks_);
  const Bytes whole_ = Join(frames_, 0, frames_.size());
  size_t fit_ = 0;
  size_t answered_ = 0;
};

TEST_F(RealFifoTest, WhatFitsIsRecordedWithoutAReaderButNotSealed) {
  EXPECT_EQ(Start(fifo_), NullReply());
  EXPECT_EQ(Cancel(), NullReply());
  ExpectNothingCanBeSealed(fifo_);
  EXPECT_EQ(ListDir(Path("")), Lines({"fifo", "undisturbed.aac"}))
      << "a FIFO is not moved aside";
}

TEST_F(RealFifoTest, AFullFifoHoldsUpTheWorkerAndNotTheMainThread) {
  RecordUntilTheFifoIsFull();
  Post("stop");
  EXPECT_EQ(Call("unknown"), NotImplemented());
  CancelLog();
  ListenToLog();
  DispatchPending();
  EXPECT_EQ(answered_, fit_ + 1) << "the worker waits for a reader";

  std::future<Bytes> read = ReadTheOtherEnd();
  AwaitReplies();
  EXPECT_EQ(answered_, chunks_.size());
  EXPECT_EQ(read.get(), whole_) << "in order, and not a byte missing";
}

// What was called before it is done before it, and that takes a reader.
TEST_F(RealFifoTest, DisposeWaitsForTheWorkerUntilSomebodyReads) {
  RecordUntilTheFifoIsFull();
  glib().Take();
  std::future<Bytes> read = ReadTheOtherEnd();
  Restart();
  EXPECT_THAT(glib().Take(),
              testing::ElementsAre(
                  PluginWarning("sync on plugin dispose failed for " + fifo_ +
                                ": " + strerror(EINVAL)),
                  PluginMessage("closed capture on plugin dispose: " + fifo_ +
                                " frames=" + std::to_string(frames_.size()))));
  EXPECT_EQ(read.get(), whole_);
}

}  // namespace
}  // namespace corvane_test
