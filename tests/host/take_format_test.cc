// Formats that would ruin a take are refused, each with its reason.
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

class TakeFormatTest : public ProgramTest {
 protected:
  ChildResult Record(int channels, const Words& more = {}) {
    Words words = {"record", take_, "-i",
                   MakeWav("in.wav", Sine(9600, channels), 48000, channels)};
    words.insert(words.end(), more.begin(), more.end());
    return Corvane(words);
  }

  static int64_t BitRate(const ChildResult& run) {
    EXPECT_EQ(run.status, 0) << run.err;
    return json::parse(run.out)["bitRate"];
  }

  const std::string take_ = Path("take.aac");
};

constexpr char kThreeChannels[] =
    ": ADTS has no way to say how three channels are laid out, so no player "
    "could play them; record 4 channels with one silent, or 2; ";

TEST_F(TakeFormatTest, ThreeChannelsAreRefusedWithTheWayOut) {
  const ChildResult run = Record(3);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "corvane: " + Path("in.wav") + kThreeChannels +
                         "--force does it all the same\n");
  EXPECT_FALSE(Exists(take_));
}

TEST_F(TakeFormatTest, ForceRecordsThreeChannelsAndSaysWhatItOverrides) {
  const ChildResult run = Record(3, {"--force"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(Lines(run.err).front(), "corvane: " + Path("in.wav") +
                                        kThreeChannels +
                                        "done all the same (--force)");
}

TEST_F(TakeFormatTest, ABitRateThatLacksItsThousandsIsAskedAbout) {
  const ChildResult run = Record(1, {"-b", "64"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "corvane: " + Path("in.wav") +
                ": 64 bit/s would ruin the take: below 8000 bit/s a channel "
                "no speech is left; was 64000 meant (-b 64k)?; --force does "
                "it all the same\n");
  EXPECT_FALSE(Exists(take_));
  EXPECT_EQ(BitRate(Record(1, {"-b", "64", "--force"})), 64);
}

TEST_F(TakeFormatTest, TheLeastBitRateCountsByChannel) {
  EXPECT_EQ(BitRate(Record(1, {"-b", "8000"})), 8000);
  EXPECT_EQ(Record(1, {"-b", "7999"}).status, 2);
  EXPECT_EQ(BitRate(Record(2, {"-b", "16000"})), 16000);
  EXPECT_EQ(Record(2, {"-b", "15999"}).status, 2);
}

TEST_F(TakeFormatTest, ThousandsMayBeWrittenAsK) {
  EXPECT_EQ(BitRate(Record(1, {"-b", "64k"})), 64000);
  EXPECT_EQ(BitRate(Record(1, {"-b", "128K"})), 128000);
}

TEST_F(TakeFormatTest, TheBitRateFollowsTheChannels) {
  EXPECT_EQ(BitRate(Record(1)), 64000);
  EXPECT_EQ(BitRate(Record(2)), 64000);
  EXPECT_EQ(BitRate(Record(3, {"--force"})), 128000);
  EXPECT_EQ(BitRate(Record(4)), 128000);
  EXPECT_EQ(BitRate(Record(5)), 192000);
  EXPECT_EQ(BitRate(Record(6)), 192000);
}

}  // namespace
}  // namespace corvane_test
