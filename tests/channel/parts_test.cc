// What the parts of the plugin promise one another and no channel shows.
#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "encoder/adts_aac_encoder.h"
#include "encoder/format_args.h"
#include "encoder/open_encoder.h"
#include "finalize/trim_torn_tail.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "support/channel_fixture.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace corvane_test {
namespace {

// The plugin's own records, beside the tests' of the same names.
using PluginReply = ::Reply;
using PluginFormat = ::FormatArgs;

Reply AsSeenByDart(const PluginReply& reply) {
  g_autoptr(FlMethodResponse) response = response_of(reply);
  return ReadReply(response);
}

TEST(ReplyTest, AResultAlwaysHasItsFiveKeys) {
  PluginReply reply;
  reply.kind = 1;
  EXPECT_EQ(AsSeenByDart(reply), Figures("", 0, 0));
  reply.path = "take.aac";
  EXPECT_EQ(AsSeenByDart(reply), Figures("take.aac", 0, 0));
}

TEST(ReplyTest, EachFigureGoesUnderItsOwnKey) {
  PluginReply reply;
  reply.kind = 1;
  reply.path = "take.aac";
  reply.duration_ms = 1;
  reply.bytes = INT64_MAX;
  reply.source_duration_ms = 3;
  reply.dropped_append_bytes = INT64_MIN;
  Reply expected = Figures("take.aac", 1, INT64_MAX, INT64_MIN);
  expected.source_duration_ms = 3;
  EXPECT_EQ(AsSeenByDart(reply), expected);
}

TEST(ReplyTest, AKindOutsideTheTableIsAnsweredWithNull) {
  for (const int kind : {0, 3, -1}) {
    PluginReply reply;
    reply.kind = kind;
    reply.path = "take.aac";
    EXPECT_EQ(AsSeenByDart(reply), NullReply()) << "kind " << kind;
  }
}

TEST(ReplyTest, AnErrorThatKnowsNothingHasThreeNulls) {
  EXPECT_EQ(AsSeenByDart(error_reply(NativeError())), PlainError("", ""));
}

TEST(NativeErrorTest, ASystemErrorCarriesItsNumberAndText) {
  const NativeError error = errno_error("WRITE_FAILED", "opening", "a.aac", 2);
  EXPECT_FALSE(error.quiet);
  EXPECT_EQ(AsSeenByDart(error_reply(error)),
            ErrnoError("WRITE_FAILED", "opening", "a.aac", ENOENT));
}

TEST(NativeErrorTest, TheNumberIsTheCallersNotErrno) {
  errno = EIO;
  EXPECT_EQ(errno_error("X", "x", "", ENOSPC).native_code, ENOSPC);
}

TEST(NativeErrorTest, ALibavErrorIsNegative) {
  const NativeError error =
      ffmpeg_error("ENCODE_FAILED", "sending", "a.aac", AVERROR_EOF);
  EXPECT_FALSE(error.quiet);
  EXPECT_EQ(AsSeenByDart(error_reply(error)),
            FfmpegError("sending", "End of file", "a.aac", AVERROR_EOF));
  EXPECT_LT(error.native_code, 0);
}

TEST(FormatTest, WavTakesAnyPositiveRateAndChannelsAndNoBitRate) {
  PluginFormat format;
  const Value args = CaptureArgs("a.wav", 44000, 8).With("bitRate", 1);
  ASSERT_TRUE(lookup_wav_format(args.get(), &format));
  EXPECT_EQ(format.sample_rate, 44000);
  EXPECT_EQ(format.channels, 8);
  EXPECT_EQ(format.bit_rate, 64000);
}

TEST(FormatTest, WavWritesNothingWhenItFails) {
  PluginFormat format = {1, 2, 3};
  for (const Value& args :
       {Value(), Value("text"), CaptureArgs("a.wav", 48000, 0),
        CaptureArgs("a.wav", 0, 1), CaptureArgs("a.wav", 48000, 1LL << 31)}) {
    SCOPED_TRACE(args.Text());
    EXPECT_FALSE(lookup_wav_format(args.get(), &format));
    EXPECT_EQ(format.sample_rate, 1);
    EXPECT_EQ(format.channels, 2);
    EXPECT_EQ(format.bit_rate, 3);
  }
}

TEST(FormatTest, AnAbsentBitRateMeansTheDefaultWhateverWasThere) {
  PluginFormat format = {1, 2, 3};
  NativeError error;
  const Value args = CaptureArgs("a.aac", 48000, 1);
  ASSERT_TRUE(lookup_adts_format(args.get(), "start", &format, &error));
  EXPECT_EQ(format.bit_rate, 64000);
}

TEST(FormatTest, AdtsRefusesWhatIsNoMap) {
  for (const Value& args : {Value(), Value("text"), Value(7)}) {
    SCOPED_TRACE(args.Text());
    PluginFormat format;
    NativeError error;
    EXPECT_FALSE(lookup_adts_format(args.get(), "start", &format, &error));
    EXPECT_EQ(AsSeenByDart(error_reply(error)),
              InvalidArgs("start requires positive int sampleRate and "
                          "channels"));
  }
  PluginFormat format;
  NativeError error;
  EXPECT_FALSE(lookup_adts_format(nullptr, "resumePath", &format, &error));
  EXPECT_EQ(error.message,
            "resumePath requires positive int sampleRate and channels");
}

TEST(FormatTest, AFailureReplacesWhateverTheErrorHeld) {
  PluginFormat format;
  NativeError error = errno_error("OLD", "old", "old", 1);
  error.quiet = true;
  const Value args = CaptureArgs("a.aac", 48000, 7);
  EXPECT_FALSE(lookup_adts_format(args.get(), "start", &format, &error));
  EXPECT_FALSE(error.quiet);
  EXPECT_EQ(AsSeenByDart(error_reply(error)),
            PlainError("UNSUPPORTED_FORMAT", "ADTS cannot express 7 channels"));
}

// A plugin's state without the plugin, its worker idle.
class StateTest : public testing::Test {
 protected:
  ~StateTest() override {
    state_.FinishTasks();
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
  }

  int OpenForAppending(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  }

  TempDir dir_;
  GlibLogCapture glib_;
  PluginState state_;
};

TEST_F(StateTest, ASessionWithoutAnEncoderIsClosedAllTheSame) {
  state_.session.fd = OpenForAppending(dir_.Path("a.aac"));
  state_.session.path = dir_.Path("a.aac");
  state_.CloseSession("a test");
  EXPECT_EQ(
      glib_.Take(),
      std::vector<GlibLine>{PluginMessage(
          "closed capture on a test: " + dir_.Path("a.aac") + " frames=0")});
  EXPECT_FALSE(state_.session.IsOpen());
}

TEST_F(StateTest, TheDroppedCountOutlivesItsSession) {
  state_.OpenSession(OpenForAppending(dir_.Path("a.aac")), dir_.Path("a.aac"),
                     48000, 1, 64000);
  state_.dropped_append_bytes = 7;
  state_.append_failure_reported = true;
  state_.CloseSession("a test");
  EXPECT_EQ(state_.dropped_append_bytes, 7u);
  EXPECT_TRUE(state_.append_failure_reported);
  state_.OpenSession(OpenForAppending(dir_.Path("b.aac")), dir_.Path("b.aac"),
                     48000, 1, 64000);
  EXPECT_EQ(state_.dropped_append_bytes, 0u);
  EXPECT_FALSE(state_.append_failure_reported);
  state_.CloseSession("a test");
}

TEST_F(StateTest, FinishBeforeOpenAndAfterOpenWithoutSamplesIsTrue) {
  const int fd = OpenForAppending(dir_.Path("a.aac"));
  AdtsAacEncoder encoder(fd, "a.aac", 48000, 1, 64000,
                         [](const char*, const std::string&) {});
  NativeError error;
  EXPECT_TRUE(encoder.Finish(&error));
  ASSERT_EQ(encoder.Open(&error), 0);
  EXPECT_TRUE(encoder.Finish(&error));
  EXPECT_FALSE(encoder.codec || encoder.frame || encoder.packet);
  EXPECT_TRUE(encoder.Finish(&error));
  EXPECT_EQ(FileSize(dir_.Path("a.aac")), 0);
  EXPECT_EQ(encoder.frames_written, 0u);
  close(fd);
}

TEST_F(StateTest, AnEncoderThatCannotOpenStaysClosed) {
  AdtsAacEncoder encoder(-1, "a.aac", 12345, 1, 64000,
                         [](const char*, const std::string&) {});
  NativeError error;
  EXPECT_EQ(encoder.Open(&error), 1);
  EXPECT_FALSE(encoder.codec || encoder.frame || encoder.packet);
}

TEST_F(StateTest, TrimmingThroughAReadOnlyDescriptorFailsAfterItsWarning) {
  const std::string path = dir_.Path("a.aac");
  const Bytes torn = {0xFF, 0xF1, 0x50};
  WriteFile(path, torn);
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  adts::Scan scan = {};
  EXPECT_EQ(trim_torn_tail(&state_, fd, path, &scan), EINVAL);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>{PluginWarning(
                              "dropping 3 torn trailing bytes from " + path)});
  EXPECT_EQ(ReadFile(path), torn);
  close(fd);
}

TEST_F(StateTest, TrimmingAFolderReportsTheReadErrorSilently) {
  const int fd = open(dir_.path().c_str(), O_RDONLY | O_CLOEXEC);
  WriteFile(dir_.Path("entry"), {1});
  adts::Scan scan = {1, 2, 3, 4, 5};
  EXPECT_EQ(trim_torn_tail(&state_, fd, dir_.path(), &scan), EISDIR);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>{});
  EXPECT_EQ(scan.valid_end, 1);
  close(fd);
}

TEST_F(StateTest, TrimmingAnEmptyFileDoesNothing) {
  const int fd = OpenForAppending(dir_.Path("a.aac"));
  adts::Scan scan = {};
  EXPECT_EQ(trim_torn_tail(&state_, fd, dir_.Path("a.aac"), &scan), 0);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>{});
  EXPECT_EQ(scan.samples, 0);
  close(fd);
}

}  // namespace
}  // namespace corvane_test
