// Rates, channel configurations and the AudioSpecificConfig.
#include "adts/stream_config.h"

#include <gtest/gtest.h>

#include <climits>
#include <set>
#include <tuple>
#include <vector>

namespace {

using adts::StreamConfig;

// In the order of sampling_frequency_index.
const std::vector<int> kRates = {96000, 88200, 64000, 48000, 44100,
                                 32000, 24000, 22050, 16000, 12000,
                                 11025, 8000,  7350};

// What an output that must stay untouched holds before the call.
constexpr StreamConfig kUntouched = {-1, -2, -3};

std::tuple<int, int, int> Fields(const StreamConfig& config) {
  return {config.object_type, config.frequency_index, config.channel_config};
}

TEST(SamplingFrequencies, AreTheThirteenOfTheFormatInItsOrder) {
  EXPECT_EQ(std::vector<int>(adts::kSamplingFrequencies.begin(),
                             adts::kSamplingFrequencies.end()),
            kRates);
}

TEST(FrequencyIndexOf, FindsEveryTableEntry) {
  for (int index = 0; index < 13; ++index) {
    EXPECT_EQ(adts::FrequencyIndexOf(kRates[index]), index) << kRates[index];
  }
}

TEST(FrequencyIndexOf, RefusesEveryOtherRateWithoutRounding) {
  const std::set<int> table(kRates.begin(), kRates.end());
  for (int rate = -10; rate <= 200000; ++rate) {
    if (table.count(rate) != 0) continue;
    ASSERT_EQ(adts::FrequencyIndexOf(rate), -1) << rate;
  }
  EXPECT_EQ(adts::FrequencyIndexOf(INT_MIN), -1);
  EXPECT_EQ(adts::FrequencyIndexOf(INT_MAX), -1);
}

TEST(IsChannelConfig, AcceptsExactlyOneToSix) {
  std::vector<int> accepted;
  for (int config = -300; config <= 300; ++config) {
    if (adts::IsChannelConfig(config)) accepted.push_back(config);
  }
  EXPECT_EQ(accepted, (std::vector<int>{1, 2, 3, 4, 5, 6}));
  EXPECT_FALSE(adts::IsChannelConfig(INT_MIN));
  EXPECT_FALSE(adts::IsChannelConfig(INT_MAX));
}

TEST(SampleRate, IsTheTableEntryAtTheFrequencyIndex) {
  for (int index = 0; index < 13; ++index) {
    EXPECT_EQ((StreamConfig{2, index, 1}.SampleRate()), kRates[index]);
  }
}

TEST(AudioSpecificConfig, OfAacLc44100StereoIsRead) {
  const uint8_t data[] = {0x12, 0x10};
  StreamConfig config = kUntouched;
  ASSERT_TRUE(adts::StreamConfigFromAudioSpecificConfig(data, 2, &config));
  EXPECT_EQ(Fields(config), std::make_tuple(2, 4, 2));
}

TEST(AudioSpecificConfig, IsAcceptedForTheListedValuesAloneInAllTwoByteForms) {
  int accepted = 0;
  for (int word = 0; word < 0x10000; ++word) {
    const int type = word >> 11;
    const int frequency = (word >> 7) & 15;
    const int channels = (word >> 3) & 15;
    const bool wanted = type >= 1 && type <= 4 && frequency < 13 &&
                        channels >= 1 && channels <= 6;
    const uint8_t data[] = {static_cast<uint8_t>(word >> 8),
                            static_cast<uint8_t>(word & 0xFF)};
    StreamConfig config = kUntouched;
    ASSERT_EQ(adts::StreamConfigFromAudioSpecificConfig(data, 2, &config),
              wanted)
        << word;
    ASSERT_EQ(Fields(config), wanted
                                  ? std::make_tuple(type, frequency, channels)
                                  : Fields(kUntouched))
        << word;
    accepted += wanted ? 1 : 0;
  }
  EXPECT_EQ(accepted, 4 * 13 * 6 * 8);  // the last three bits are free
}

TEST(AudioSpecificConfig, BytesBeyondTheSecondAreIgnored) {
  for (int third = 0; third < 256; ++third) {
    const uint8_t data[] = {0x11, 0x88, static_cast<uint8_t>(third), 0xE5};
    StreamConfig config = kUntouched;
    ASSERT_TRUE(adts::StreamConfigFromAudioSpecificConfig(data, 4, &config));
    ASSERT_EQ(Fields(config), std::make_tuple(2, 3, 1));
  }
}

TEST(AudioSpecificConfig, OfOneByteIsRefusedWhateverLiesBehindIt) {
  const uint8_t data[] = {0x12, 0x10};
  StreamConfig config = kUntouched;
  EXPECT_FALSE(adts::StreamConfigFromAudioSpecificConfig(data, 1, &config));
  EXPECT_EQ(Fields(config), Fields(kUntouched));
}

struct Refused {
  const char* why;
  std::vector<uint8_t> data;
};

TEST(AudioSpecificConfig, IsRefusedAndLeavesTheOutputAlone) {
  const std::vector<Refused> cases = {
      {"one byte", {0x12}},
      {"object type 0", {0x00, 0x10}},
      {"object type 5, SBR", {0x2A, 0x10}},
      {"object type 31, the escape", {0xF8, 0x10}},
      {"frequency index 13", {0x16, 0x90}},
      {"frequency index 15, the escape", {0x17, 0x90}},
      {"channel configuration 0", {0x12, 0x00}},
      {"channel configuration 7", {0x12, 0x38}},
      {"channel configuration 15", {0x12, 0x78}},
  };
  for (const Refused& refused : cases) {
    StreamConfig config = kUntouched;
    EXPECT_FALSE(adts::StreamConfigFromAudioSpecificConfig(
        refused.data.data(), refused.data.size(), &config))
        << refused.why;
    EXPECT_EQ(Fields(config), Fields(kUntouched)) << refused.why;
  }
}

TEST(AudioSpecificConfig, NullOrEmptyIsRefused) {
  const uint8_t data[] = {0x12, 0x10};
  StreamConfig config = kUntouched;
  EXPECT_FALSE(adts::StreamConfigFromAudioSpecificConfig(nullptr, 2, &config));
  EXPECT_FALSE(adts::StreamConfigFromAudioSpecificConfig(nullptr, 0, &config));
  EXPECT_FALSE(adts::StreamConfigFromAudioSpecificConfig(data, 0, &config));
  EXPECT_EQ(Fields(config), Fields(kUntouched));
}

}  // namespace
