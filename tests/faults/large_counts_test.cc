// Counts that take years to reach, set by hand: what the parts do with them at
// the ends of their types.
#include "faults_fixture.h"
#include "finalize/resume_path.h"
#include "finalize/seal.h"
#include "recording/append.h"
#include "recording/controls.h"
#include "report/reply.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace corvane_test {
namespace {

const uint64_t k2To32 = uint64_t{1} << 32;

// A plugin's state without the plugin: the test does what the worker would.
class LargeCountTest : public testing::Test {
 protected:
  ~LargeCountTest() override {
    state_.CloseSession("the test's end");
    state_.FinishTasks();
  }

  void Begin() {
    const int fd =
        open(path_.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    state_.OpenSession(fd, path_, 48000, 1, 64000);
  }

  // The last line that the plugin has logged, without the tag.
  std::string LastLine() const {
    return glib_.Lines().back().message.substr(10);
  }

  static Reply AsDartSeesIt(const ::Reply& reply) {
    g_autoptr(FlMethodResponse) response = response_of(reply);
    return ReadReply(response);
  }

  const WatchProgram watch_;
  TempDir dir_;
  const std::string path_ = dir_.Path("take.aac");
  GlibLogCapture glib_;
  PluginState state_;
};

TEST_F(LargeCountTest, OfDroppedBytesGoesOnBehind32Bits) {
  Begin();
  state_.session.paused = true;
  state_.dropped_append_bytes = k2To32 - 1;
  append_chunk(&state_, Bytes(3, 0));
  EXPECT_EQ(state_.dropped_append_bytes, k2To32 + 2);
}

TEST_F(LargeCountTest, OfDroppedBytesIsAnsweredAndLoggedByTheSeal) {
  for (const uint64_t dropped :
       {k2To32 / 2, k2To32, static_cast<uint64_t>(INT64_MAX), UINT64_MAX}) {
    Begin();
    append_chunk(&state_, Sine(10));
    state_.dropped_append_bytes = dropped;
    const Reply reply = AsDartSeesIt(stop_capture(&state_));
    EXPECT_EQ(reply.dropped_append_bytes, static_cast<int64_t>(dropped));
    const std::string figure = " droppedAppendBytes=" + std::to_string(dropped);
    const std::vector<GlibLine> lines = glib_.Take();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2],
              PluginMessage("stop start capture=" + path_ + figure));
    EXPECT_THAT(lines.back().message, testing::EndsWith(figure));
  }
}

TEST_F(LargeCountTest, OfFramesIsToldWithItsSign) {
  const std::vector<std::pair<uint64_t, std::string>> counts = {
      {k2To32 / 2, "2147483648"},
      {k2To32 + 7, "4294967303"},
      {INT64_MAX, "9223372036854775807"},
      {UINT64_MAX, "-1"}};
  for (const auto& [count, told] : counts) {
    Begin();
    state_.session.encoder->frames_written = count;
    state_.CloseSession("cancel");
    EXPECT_EQ(LastLine(),
              "closed capture on cancel: " + path_ + " frames=" + told);
  }
}

TEST_F(LargeCountTest, OfFramesGoesOnBehind32Bits) {
  Begin();
  state_.session.encoder->frames_written = k2To32 - 1;
  append_chunk(&state_, Sine(2 * kFrameSamples));
  EXPECT_EQ(state_.session.encoder->frames_written, k2To32);
}

// A take of a whole night ends behind 2^32 samples at 96000 Hz.
TEST_F(LargeCountTest, OfSamplesIsTheTimeOfTheNextFrame) {
  Begin();
  append_chunk(&state_, Sine(kFrameSamples));
  for (const int64_t pts :
       {int64_t{1} << 31, int64_t{1} << 32, int64_t{1} << 40}) {
    SentFrames sent;
    state_.session.encoder->next_pts = pts;
    append_chunk(&state_, Sine(kFrameSamples));
    ASSERT_EQ(sent.all().size(), 1U);
    EXPECT_EQ(sent.all()[0].pts, pts);
    EXPECT_EQ(state_.session.encoder->next_pts, pts + kFrameSamples);
  }
}

TEST_F(LargeCountTest, OfSamplesIsTheTimeOfTheLastFrame) {
  Begin();
  append_chunk(&state_, Sine(10));
  state_.session.encoder->next_pts = int64_t{1} << 40;
  SentFrames sent;
  state_.CloseSession("cancel");
  ASSERT_EQ(sent.all().size(), 2U);
  EXPECT_EQ(sent.all()[0].pts, int64_t{1} << 40);
}

TEST_F(LargeCountTest, OfBytesWithoutACaptureIsNamed) {
  for (const size_t size : {size_t{k2To32 / 2}, size_t{k2To32}, SIZE_MAX}) {
    EXPECT_EQ(
        not_recording(&state_, size).error.message,
        "append of " + std::to_string(size) + " bytes with no open recording");
  }
}

TEST_F(LargeCountTest, OfChannelsMakesALargeSampleFrame) {
  const AdtsAacEncoder encoder(-1, path_, 48000, INT32_MAX, 64000,
                               [](const char*, const std::string&) {});
  EXPECT_EQ(encoder.bytes_per_frame, k2To32 - 2);
}

TEST(LargeReplyTest, FiguresHave64Bits) {
  for (const int64_t figure : {INT64_MAX, INT64_MIN, int64_t{1} << 31}) {
    ::Reply reply;
    reply.kind = 1;
    reply.duration_ms = figure;
    reply.bytes = figure;
    reply.source_duration_ms = figure;
    reply.dropped_append_bytes = figure;
    g_autoptr(FlMethodResponse) response = response_of(reply);
    EXPECT_EQ(ReadReply(response), Figures("", figure, figure, figure));
  }
}

TEST(LargeReplyTest, SoHasTheNumberOfAnError) {
  for (const int64_t number : {INT64_MAX, INT64_MIN, int64_t{1} << 31}) {
    NativeError error;
    error.has_native_code = true;
    error.native_code = number;
    g_autoptr(FlMethodResponse) response = response_of(error_reply(error));
    EXPECT_EQ(ReadReply(response).native_code, number);
  }
}

TEST(LargeReplyTest, ADurationLastsAsLongAsItsSourceInTheLog) {
  adts::Scan scan = {};
  scan.samples = INT64_MAX / 1000;
  scan.sample_rate = 1;
  const ::Reply reply = verified_reply("take.aac", scan, 7, 0);
  EXPECT_EQ(reply.duration_ms, INT64_MAX / 1000 * 1000);
  EXPECT_EQ(reply.source_duration_ms, reply.duration_ms);
}

}  // namespace
}  // namespace corvane_test
