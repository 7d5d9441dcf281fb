// Sample rate, channels and bit rate as the methods take them.
#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;

constexpr int64_t kIntMax = 2147483647;
constexpr int64_t kAbove32Bits = int64_t{1} << 32;

// The three methods that take a whole format, all of which refuse alike.
const std::vector<const char*> kMethods = {"start", "resumePath",
                                           "finalizePath"};

class FormatArgumentsTest : public ChannelTest {
 protected:
  // Arguments that are good for each of the methods.
  Value Good() {
    return CaptureArgs(Path("take.aac"), 48000, 1)
        .With("outputPath", Path("take.aac"));
  }

  void ExpectRefused(const char* method, const Value& args,
                     const Reply& refusal) {
    SCOPED_TRACE(method + (" with " + args.Text()));
    TakeTranscript();
    EXPECT_EQ(Call(method, args), refusal);
    EXPECT_THAT(TakeTranscript(),
                ElementsAre(Failed(method, refusal), Answer(method, refusal)));
  }
};

TEST_F(FormatArgumentsTest, RateAndChannelsMustBePositiveInts) {
  const std::vector<Value> bad_numbers = {
      0, -1, int64_t{kIntMax + 1},
      // Cut to 32 bits they would be good.
      kAbove32Bits + 44100, kAbove32Bits + 1, INT64_MIN, INT64_MAX, 44100.0,
      1.0, "1", Value::Null(), Bytes{1}, Value::Bool(true), Value::List({1})};
  for (const char* method : kMethods) {
    const Reply refusal = InvalidArgs(
        std::string(method) + " requires positive int sampleRate and channels");
    for (const char* key : {"sampleRate", "channels"}) {
      ExpectRefused(method, Good().Without(key), refusal);
      for (const Value& bad : bad_numbers) {
        ExpectRefused(method, Good().With(key, bad), refusal);
      }
    }
  }
}

TEST_F(FormatArgumentsTest, ABitRateThatIsThereMustBeAPositiveInt) {
  const std::vector<Value> bad = {0,         -1,
                                  INT64_MIN, 64000.0,
                                  "64000",   Value::Null(),
                                  Bytes{64}, Value::Map({})};
  for (const char* method : kMethods) {
    const Reply refusal =
        InvalidArgs(std::string(method) + " bitRate must be a positive int");
    for (const Value& bit_rate : bad) {
      ExpectRefused(method, Good().With("bitRate", bit_rate), refusal);
    }
  }
}

TEST_F(FormatArgumentsTest, ARateWithoutAnAdtsIndexIsUnsupported) {
  for (const char* method : kMethods) {
    for (const int64_t rate : std::vector<int64_t>{
             1, 7349, 7351, 44000, 44101, 95999, 96001, 192000, kIntMax}) {
      ExpectRefused(
          method, Good().With("sampleRate", rate),
          PlainError("UNSUPPORTED_FORMAT",
                     "ADTS has no index for " + std::to_string(rate) + " Hz"));
    }
  }
}

TEST_F(FormatArgumentsTest, MoreThanSixChannelsAreUnsupported) {
  for (const char* method : kMethods) {
    for (const int64_t channels : std::vector<int64_t>{7, 8, 65536, kIntMax}) {
      ExpectRefused(method, Good().With("channels", channels),
                    PlainError("UNSUPPORTED_FORMAT",
                               "ADTS cannot express " +
                                   std::to_string(channels) + " channels"));
    }
  }
}

TEST_F(FormatArgumentsTest, ChecksRunInAFixedOrder) {
  const Value all_bad = Good()
                            .With("capturePath", "")
                            .With("channels", 8)
                            .With("sampleRate", 44000)
                            .With("bitRate", 0);
  ExpectRefused("start", all_bad, InvalidArgs("start requires capturePath"));
  const Value with_path = all_bad.With("capturePath", Path("take.aac"));
  ExpectRefused(
      "start", with_path.With("channels", 0),
      InvalidArgs("start requires positive int sampleRate and channels"));
  ExpectRefused("start", with_path,
                InvalidArgs("start bitRate must be a positive int"));
  ExpectRefused(
      "start", with_path.With("bitRate", 1),
      PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz"));
  ExpectRefused(
      "start", with_path.With("bitRate", 1).With("sampleRate", 48000),
      PlainError("UNSUPPORTED_FORMAT", "ADTS cannot express 8 channels"));
}

TEST_F(FormatArgumentsTest, ARefusedStartLeavesTheOpenCaptureAlone) {
  const std::string path = Path("take.aac");
  Start(path);
  Append(Noise(1024));
  EXPECT_EQ(Start(Path("other.aac"), 44000, 1),
            PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz"));
  EXPECT_THAT(Stop(), Sealed(path, 42));
  EXPECT_THAT(ListDir(Path("")), ElementsAre("take.aac"));
}

TEST_F(FormatArgumentsTest, TheThirteenRatesAndSixLayoutsAreTaken) {
  for (const int rate : {96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050,
                         16000, 12000, 11025, 8000, 7350}) {
    for (int channels = 1; channels <= 6; ++channels) {
      EXPECT_EQ(Start(Path("take.aac"), rate, channels), NullReply());
      EXPECT_THAT(TakeTranscript(),
                  IsSupersetOf({StartLine(Path("take.aac"), rate, channels)}));
    }
  }
}

TEST_F(FormatArgumentsTest, AnAbsentBitRateMeans64000) {
  Start(Path("take.aac"));
  Append(Silence(1));
  EXPECT_THAT(LogLines(), ElementsAre(StartLine(Path("take.aac"), 48000, 1),
                                      EncoderLine(48000, 1)));
}

TEST_F(FormatArgumentsTest, ABitRateIsPassedOnUnchanged) {
  for (const int64_t bit_rate :
       std::vector<int64_t>{16000, 32000, 320000, 10000000}) {
    EXPECT_EQ(
        Call("start",
             CaptureArgs(Path("take.aac"), 48000, 1).With("bitRate", bit_rate)),
        NullReply());
    EXPECT_EQ(Append(Silence(1)), NullReply());
    EXPECT_THAT(LogLines(),
                ElementsAre(StartLine(Path("take.aac"), 48000, 1, bit_rate),
                            EncoderLine(48000, 1, bit_rate)));
    Cancel();
    TruncateFile(Path("take.aac"), 0);
    TakeTranscript();
  }
}

TEST_F(FormatArgumentsTest, FurtherKeysAreIgnored) {
  EXPECT_EQ(Call("start", Good().With("codec", "opus").With("7", 7)),
            NullReply());
}

}  // namespace
}  // namespace corvane_test
