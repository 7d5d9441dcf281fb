// "finalizeWavOnly": every field of the header that it writes, for every size.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "wav_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using WavHeaderTest = FinalizeWavOnlyTest;

constexpr int64_t kIntMax = 2147483647;
constexpr uint64_t kMostDataBytes = 4294967259;

TEST_F(WavHeaderTest, TheWholeHeaderIsWrittenAndNothingElse) {
  const Bytes before = Unfinished(1000);
  WriteFile(path_, before);
  ExpectRepaired(1000);
  EXPECT_EQ(ReadFile(path_),
            Concat(WavHeaderOf({1036, 2, 48000, 192000, 4, 1000}),
                   Slice(before, kWavHeaderSize)));
}

TEST_F(WavHeaderTest, AnyLengthIsMeasuredToTheByte) {
  for (const uint32_t data : {0u, 1u, 2u, 3u, 999u, 65535u, 65536u, 70001u}) {
    SCOPED_TRACE(data);
    const Bytes before = Unfinished(data);
    WriteFile(path_, before);
    ExpectRepaired(data);
    EXPECT_EQ(ReadFile(path_),
              Concat(WavHeaderOf({data + 36, 2, 48000, 192000, 4, data}),
                     Slice(before, kWavHeaderSize)));
  }
}

TEST_F(WavHeaderTest, AFileShorterThanAHeaderBecomesOne) {
  for (const size_t size : {0, 1, 4, 22, 43, 44}) {
    SCOPED_TRACE(size);
    WriteFile(path_, Bytes(size, 0xAA));
    ExpectRepaired(0, 44100, 1);
    EXPECT_EQ(ReadFile(path_), WavHeaderOf({36, 1, 44100, 88200, 2, 0}));
  }
}

TEST_F(WavHeaderTest, RateAndChannelsAreWrittenAsFarAsTheyFit) {
  struct Case {
    int64_t rate;
    int64_t channels;
    WavFields header;
  };
  const std::vector<Case> cases = {
      {1, 1, {46, 1, 1, 2, 2, 10}},
      {44000, 8, {46, 8, 44000, 704000, 16, 10}},
      {192000, 6, {46, 6, 192000, 2304000, 12, 10}},
      {48000, 32767, {46, 32767, 48000, 3145632000, 65534, 10}},
      {48000, 32768, {46, 32768, 48000, 3145728000, 0, 10}},
      {8000, 65535, {46, 65535, 8000, 1048560000, 65534, 10}},
      {8000, 65536, {46, 0, 8000, 1048576000, 0, 10}},
      {48000, 65537, {46, 1, 48000, 1996584704, 2, 10}},
      {kIntMax, 1, {46, 1, 2147483647, 4294967294, 2, 10}},
      {kIntMax, 2, {46, 2, 2147483647, 4294967292, 4, 10}},
      {kIntMax, kIntMax, {46, 65535, 2147483647, 2, 65534, 10}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.rate) + " Hz, " + std::to_string(c.channels));
    WriteFile(path_, Unfinished(10));
    ExpectRepaired(10, c.rate, c.channels);
    EXPECT_EQ(HeaderNow(), WavHeaderOf(c.header));
  }
}

class HugeWavTest : public FinalizeWavOnlyTest {
 protected:
  // Sound lies behind the header and at the very end.
  void MakeHuge(uint64_t data_bytes) {
    WriteFile(path_, Unfinished(100));
    TruncateFile(path_, kWavHeaderSize + data_bytes - 3);
    AppendToFile(path_, {'e', 'n', 'd'});
  }

  void ExpectFullHeaderAndSoundAsBefore(uint64_t data_bytes) {
    EXPECT_EQ(HeaderNow(),
              WavHeaderOf({4294967295, 2, 48000, 192000, 4, 4294967259}));
    EXPECT_EQ(Part(kWavHeaderSize, 200),
              Concat(Slice(Unfinished(100), kWavHeaderSize), Bytes(100, 0)));
    EXPECT_EQ(Part(kWavHeaderSize + data_bytes - 4, 10),
              (Bytes{0, 'e', 'n', 'd'}));
  }
};

TEST_F(HugeWavTest, TheLargestSizeThatFitsIsWritten) {
  MakeHuge(kMostDataBytes);
  ExpectRepaired(kMostDataBytes);
  ExpectFullHeaderAndSoundAsBefore(kMostDataBytes);
}

TEST_F(HugeWavTest, OneByteLessIsWrittenAsItIs) {
  MakeHuge(kMostDataBytes - 1);
  ExpectRepaired(kMostDataBytes - 1);
  EXPECT_EQ(HeaderNow(),
            WavHeaderOf({4294967294, 2, 48000, 192000, 4, 4294967258}));
}

TEST_F(HugeWavTest, AnythingAboveIsCappedWithAWarningThatNamesTheTrueSize) {
  for (const uint64_t data :
       {kMostDataBytes + 1, uint64_t{4294967296}, uint64_t{20000000001}}) {
    SCOPED_TRACE(data);
    MakeHuge(data);
    Repair(path_);
    EXPECT_THAT(
        TakeTranscript(),
        ElementsAre(Warning("WAV " + path_ + " holds " + std::to_string(data) +
                            " data bytes; header capped at 4294967259"),
                    PatchedLine(path_, data),
                    Answer("finalizeWavOnly", NullReply())));
    ExpectFullHeaderAndSoundAsBefore(data);
  }
}

}  // namespace
}  // namespace corvane_test
