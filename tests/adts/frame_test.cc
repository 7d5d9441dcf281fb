// Frames as they are written, against a header made bit by bit.
#include "adts/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "pieces.h"

namespace corvane_test {
namespace {

using adts::StreamConfig;

constexpr size_t kLargestPayload = 8184;
constexpr StreamConfig kLc44100Stereo = {2, 4, 2};

Bytes ExpectedFrame(const StreamConfig& config, const Bytes& payload) {
  HeaderFields fields;
  fields.profile = static_cast<unsigned>(config.object_type - 1) & 3;
  fields.frequency_index = static_cast<unsigned>(config.frequency_index);
  fields.channel_configuration = static_cast<unsigned>(config.channel_config);
  fields.frame_length = static_cast<unsigned>(payload.size() + 7);
  return HeaderBytes(fields) + payload;
}

Bytes Framed(const StreamConfig& config, const Bytes& payload) {
  Bytes out;
  EXPECT_TRUE(adts::Frame(config, payload.data(), payload.size(), &out));
  return out;
}

Bytes HeaderOf(const Bytes& frame) {
  return {frame.begin(), frame.begin() + 7};
}

Bytes Noise(size_t size) {
  std::mt19937 random(7);
  Bytes bytes(size);
  std::generate(bytes.begin(), bytes.end(),
                [&random] { return static_cast<uint8_t>(random()); });
  return bytes;
}

TEST(Frame, OfAacLc44100StereoAnd371BytesHasTheKnownHeader) {
  const Bytes payload = Noise(371);
  EXPECT_EQ(Framed(kLc44100Stereo, payload),
            Hex("FF F1 50 80 2F 5F FC") + payload);
}

TEST(Frame, OfAacLc48000MonoAndTheLargestPayloadHasTheKnownHeader) {
  EXPECT_EQ(HeaderOf(Framed({2, 3, 1}, Noise(kLargestPayload))),
            Hex("FF F1 4C 43 FF FF FC"));
}

TEST(Frame, MatchesTheBitTableForEveryRateLayoutAndLength) {
  // Every length where a bit of aac_frame_length begins or ends to carry.
  std::vector<size_t> sizes = {0, 1, 2, 371, kLargestPayload};
  for (size_t bit = 8; bit <= 8192; bit *= 2) {
    for (size_t length = bit - 1; length <= bit + 1; ++length) {
      if (length >= 7 && length <= 8191) sizes.push_back(length - 7);
    }
  }
  const Bytes noise = Noise(kLargestPayload);
  for (int frequency = 0; frequency < 13; ++frequency) {
    for (int channels = 1; channels <= 6; ++channels) {
      for (const size_t size : sizes) {
        const StreamConfig config = {2, frequency, channels};
        const Bytes payload(noise.data(), noise.data() + size);
        ASSERT_EQ(Framed(config, payload), ExpectedFrame(config, payload))
            << "index " << frequency << " channels " << channels << " payload "
            << size;
      }
    }
  }
}

TEST(Frame, MatchesTheBitTableForEveryPayloadSize) {
  const Bytes noise = Noise(kLargestPayload);
  Bytes out;
  for (size_t size = 0; size <= kLargestPayload; ++size) {
    ASSERT_TRUE(adts::Frame(kLc44100Stereo, noise.data(), size, &out));
    ASSERT_EQ(out.size(), size + 7);
    HeaderFields fields;
    fields.frame_length = static_cast<unsigned>(size + 7);
    ASSERT_EQ(HeaderOf(out), HeaderBytes(fields)) << size;
    ASSERT_TRUE(std::equal(out.begin() + 7, out.end(), noise.begin())) << size;
  }
}

TEST(Frame, WritesTheObjectTypeLessOneModuloFourAsProfile) {
  for (int object_type = 1; object_type <= 4; ++object_type) {
    const StreamConfig config = {object_type, 4, 2};
    EXPECT_EQ(Framed(config, {}), ExpectedFrame(config, {})) << object_type;
  }
  EXPECT_EQ(Framed({1, 0, 1}, {})[2] >> 6, 0);
  EXPECT_EQ(Framed({4, 0, 1}, {})[2] >> 6, 3);
  EXPECT_EQ(Framed({0, 0, 1}, {})[2] >> 6, 3);
  EXPECT_EQ(Framed({5, 0, 1}, {})[2] >> 6, 0);
}

TEST(Frame, TakesAnEmptyPayload) {
  Bytes out = {1, 2, 3};
  ASSERT_TRUE(adts::Frame(kLc44100Stereo, nullptr, 0, &out));
  EXPECT_EQ(out, Hex("FF F1 50 80 00 FF FC"));
}

TEST(Frame, OfTheLargestPayloadSaysLength1FFF) {
  const Bytes out = Framed(kLc44100Stereo, Noise(kLargestPayload));
  ASSERT_EQ(out.size(), 8191U);
  EXPECT_EQ((out[3] & 3) << 11 | out[4] << 3 | out[5] >> 5, 0x1FFF);
}

TEST(Frame, RefusesALargerPayloadAndLeavesTheVectorAlone) {
  const Bytes payload = Noise(kLargestPayload + 1);
  for (const size_t size : {kLargestPayload + 1, SIZE_MAX - 7, SIZE_MAX - 6,
                            SIZE_MAX}) {  // the last three wrap around
    Bytes out = {1, 2, 3};
    const uint8_t* const storage = out.data();
    EXPECT_FALSE(adts::Frame(kLc44100Stereo, payload.data(), size, &out))
        << size;
    EXPECT_EQ(out, (Bytes{1, 2, 3})) << size;
    EXPECT_EQ(out.data(), storage) << size;
  }
}

TEST(Frame, IntoALongerVectorLeavesItExactlyOneFrameLong) {
  Bytes out(5000, 0xEE);
  ASSERT_TRUE(adts::Frame(kLc44100Stereo, Noise(10).data(), 10, &out));
  EXPECT_EQ(out, ExpectedFrame(kLc44100Stereo, Noise(10)));
}

TEST(Frame, ReusesTheVectorsStorage) {
  Bytes out;
  ASSERT_TRUE(adts::Frame(kLc44100Stereo, Noise(4000).data(), 4000, &out));
  const uint8_t* const storage = out.data();
  for (const size_t size : {0U, 1U, 3999U, 4000U}) {
    ASSERT_TRUE(adts::Frame(kLc44100Stereo, Noise(4000).data(), size, &out));
    EXPECT_EQ(out.data(), storage) << size;
  }
}

}  // namespace
}  // namespace corvane_test
