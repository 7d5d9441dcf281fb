// `corvane repair-wav` where there is something to repair.
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

constexpr size_t kHeaderSize = 44;
constexpr size_t kRiffSizeAt = 4;
constexpr size_t kDataSizeAt = 40;

class RepairWavTest : public ProgramTest {
 protected:
  RepairWavTest()
      : whole_(ReadFile(MakeWav("whole.wav", Sine(48000, 2), 48000, 2))) {}

  // The file as its writer leaves it when it dies: without sizes.
  Bytes WithoutSizes() const {
    Bytes file = whole_;
    for (const size_t at : {kRiffSizeAt, kDataSizeAt}) {
      for (size_t i = 0; i < 4; ++i) file[at + i] = 0;
    }
    return file;
  }

  Bytes WithoutHeader() const {
    return Concat(Bytes(kHeaderSize, 0), Slice(whole_, kHeaderSize));
  }

  ChildResult Repair(const Bytes& file, const Words& options = {}) {
    WriteFile(wav_, file);
    Words words = {"repair-wav", wav_};
    words.insert(words.end(), options.begin(), options.end());
    return Corvane(words);
  }

  const Bytes whole_;
  const std::string wav_ = Path("take.wav");
};

TEST_F(RepairWavTest, SizesAreWrittenAnewAndNothingElse) {
  const ChildResult run = Repair(WithoutSizes());
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(wav_), whole_);
}

TEST_F(RepairWavTest, WhatWasChangedIsSaidFromAndTo) {
  const ChildResult run = Repair(WithoutSizes());
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Lines(run.err).back(),
            "corvane: " + wav_ +
                ": changed riffSize from 0 to 192036, dataSize from 0 to "
                "192000");
  ASSERT_EQ(Lines(run.out).size(), 1U) << run.out;
  const json result = json::parse(run.out);
  const json expected = {{"riffSize", {{"from", 0}, {"to", 192036}}},
                         {"dataSize", {{"from", 0}, {"to", 192000}}}};
  EXPECT_EQ(result["changed"], expected);
  EXPECT_EQ(result["path"], wav_);
  EXPECT_EQ(result["bytes"], 192044);
  EXPECT_EQ(result["dataBytes"], 192000);
  EXPECT_EQ(result["durationMs"], 1000);
  EXPECT_EQ(result["sampleRate"], 48000);
  EXPECT_EQ(result["channels"], 2);
}

TEST_F(RepairWavTest, ARightHeaderIsLeftAsItIs) {
  const ChildResult run = Repair(whole_);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Lines(run.err).back(),
            "corvane: " + wav_ + ": the header was right already");
  EXPECT_EQ(json::parse(run.out)["changed"], json::object());
  EXPECT_EQ(ReadFile(wav_), whole_);
}

TEST_F(RepairWavTest, WhatIsGivenCountsBeforeTheOldHeader) {
  const ChildResult run = Repair(WithoutSizes(), {"-r", "44100", "-c", "1"});
  ASSERT_EQ(run.status, 0) << run.err;
  const json changed = json::parse(run.out)["changed"];
  EXPECT_EQ(changed["sampleRate"]["from"], 48000);
  EXPECT_EQ(changed["sampleRate"]["to"], 44100);
  EXPECT_EQ(changed["channels"]["from"], 2);
  EXPECT_EQ(changed["channels"]["to"], 1);
}

TEST_F(RepairWavTest, AHeaderThatWasNeverWrittenNeedsRateAndChannels) {
  for (const Words& options :
       {Words{}, Words{"-r", "48000"}, Words{"-c", "2"}}) {
    const ChildResult run = Repair(WithoutHeader(), options);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "corvane: " + wav_ +
                           ": its header holds no rate and channels that can "
                           "be believed; say them, as in -r 48000 -c 1\n");
    EXPECT_EQ(ReadFile(wav_), WithoutHeader());
  }
  const ChildResult run = Repair(WithoutHeader(), {"-r", "48000", "-c", "2"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(ReadFile(wav_), whole_);
}

TEST_F(RepairWavTest, TheOldHeaderIsInTheResult) {
  const Bytes file = Concat({'f', 'L', 'a', 'C'}, Bytes(96, 0xA5));
  const ChildResult run = Repair(file, {"--force", "-r", "48000", "-c", "2"});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Lines(run.err).back(),
            "corvane: " + wav_ +
                ": a WAV header was written over its first 44 bytes; they are "
                "in the result, as headerBefore");
  std::string hex = "664c6143";
  for (int i = 0; i < 40; ++i) hex += "a5";
  EXPECT_EQ(json::parse(run.out)["headerBefore"], hex);
  EXPECT_EQ(Slice(ReadFile(wav_), kHeaderSize), Slice(file, kHeaderSize));
}

TEST_F(RepairWavTest, AFileOfMoreThan4GiBIsCappedAndItsSizeTold) {
  WriteFile(wav_, Slice(WithoutSizes(), 0, kHeaderSize));
  const size_t size = (size_t{1} << 32) + kHeaderSize;
  TruncateFile(wav_, size);
  const ChildResult run = Corvane({"repair-wav", wav_});
  ASSERT_EQ(run.status, 0) << run.err;
  const json result = json::parse(run.out);
  EXPECT_EQ(result["bytes"], size);
  EXPECT_EQ(result["dataBytes"], size - kHeaderSize);
  EXPECT_EQ(result["changed"]["dataSize"]["to"], 4294967259);
}

}  // namespace
}  // namespace corvane_test
