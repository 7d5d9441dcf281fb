// When the codec's objects and the capture's descriptor are given back: before
// the next step is taken, not some time.

#include "look_fixture.h"

namespace corvane_test {
namespace {

using GiveBackTest = LookTest;

TEST_F(GiveBackTest, APacketsDataIsGivenBackBeforeItsFrameIsWritten) {
  Begin();
  const AVPacket* packet = nullptr;
  int held = 0;
  int writes = 0;
  Fault received(On("avcodec_receive_packet").After([&](PluginCall& call) {
    packet = call.packet;
  }));
  Fault written(On("write").Before([&](PluginCall&) {
    ++writes;
    held += packet->buf != nullptr || packet->size != 0 ? 1 : 0;
  }));
  Append(Sine(5 * kFrameSamples));
  EXPECT_EQ(writes, 4);
  EXPECT_EQ(held, 0);
}

TEST_F(GiveBackTest, SoIsThatOfAPacketThatDoesNotFit) {
  Begin();
  const AVPacket* packet = nullptr;
  bool empty = false;
  Fault large(PacketsResizedTo(8185));
  Fault received(On("avcodec_receive_packet").After([&](PluginCall& call) {
    packet = call.packet;
  }));
  Fault released(On("avcodec_free_context").Nth(1).Before([&](PluginCall&) {
    empty = packet != nullptr && packet->buf == nullptr;
  }));
  Append(Sine(2 * kFrameSamples));
  EXPECT_TRUE(empty);
}

TEST_F(GiveBackTest, TheCodecIsGivenBackBeforeItsFileIsSynced) {
  Begin();
  Append(Sine(100));
  Seen seen;
  Fault look(Look(On("fsync"), &seen));
  Cancel();
  EXPECT_EQ(seen.held, HeldWithoutCodec());
}

TEST_F(GiveBackTest, SoItIsWhenTheDrainFails) {
  Begin();
  Append(Sine(100));
  Seen seen;
  Fault drain(On("avcodec_send_frame").Fail(EAGAIN));
  Fault look(Look(On("fsync"), &seen));
  Cancel();
  EXPECT_EQ(seen.held, HeldWithoutCodec());
}

TEST_F(GiveBackTest, NothingOfTheCaptureIsHeldWhenItIsSealed) {
  const std::string path = Begin();
  Append(Sine(kFrameSamples));
  Seen seen;
  Fault look(Look(On("open"), &seen));
  FinalizePath(path);
  EXPECT_EQ(seen.held, Held());
}

TEST_F(GiveBackTest, NothingOfTheLastCaptureIsHeldWhenTheNextIsLookedFor) {
  Begin();
  Append(Sine(kFrameSamples));
  Seen stat, open;
  Fault look_at_stat(Look(On("stat"), &stat));
  Fault look_at_open(Look(On("open"), &open));
  Start(Path("next.aac"));
  EXPECT_EQ(stat.held, Held());
  ResumePath(Path("next.aac"));
  EXPECT_EQ(open.held, Held());
}

TEST_F(GiveBackTest, ACodecThatGaveUpIsGivenBackBeforeItsReply) {
  Begin();
  Fault fault(On("avcodec_send_frame").Fail(EAGAIN));
  Append(Sine(3 * kFrameSamples));
  EXPECT_EQ(HeldNow(), HeldWithoutCodec());
}

// Before a new codec is asked for the old one is gone.
TEST_F(GiveBackTest, TwoCodecsAreNeverThereAtATime) {
  Begin();
  Seen seen;
  Fault fault(On("avcodec_send_frame").Nth(1).Fail(EAGAIN));
  Fault look(Look(On("avcodec_alloc_context3").Nth(2), &seen));
  Append(Sine(2 * kFrameSamples));
  EXPECT_EQ(seen.held, HeldWithoutCodec());
}

}  // namespace
}  // namespace corvane_test
