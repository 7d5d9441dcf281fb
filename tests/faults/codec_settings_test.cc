// What the codec and its frames are told, seen where libavcodec is called.
#include <optional>
#include <ostream>
#include <vector>

#include "faults_fixture.h"

namespace corvane_test {
namespace {

// In the words of libavcodec.
struct Settings {
  int rate;
  int64_t bit_rate;
  int format;
  int profile;
  int time_base_num;
  int time_base_den;
  int channels;
};

bool operator==(const Settings& a, const Settings& b) {
  return a.rate == b.rate && a.bit_rate == b.bit_rate && a.format == b.format &&
         a.profile == b.profile && a.time_base_num == b.time_base_num &&
         a.time_base_den == b.time_base_den && a.channels == b.channels;
}

std::ostream& operator<<(std::ostream& out, const Settings& it) {
  return out << "rate " << it.rate << ", bit rate " << it.bit_rate
             << ", format " << it.format << ", profile " << it.profile
             << ", time base " << it.time_base_num << "/" << it.time_base_den
             << ", channels " << it.channels;
}

Settings SettingsOf(const AVCodecContext& context) {
  return {context.sample_rate,          context.bit_rate,
          context.sample_fmt,           context.profile,
          context.time_base.num,        context.time_base.den,
          context.ch_layout.nb_channels};
}

TEST_F(FaultsTest, CodecIsOpenedWithTheSettingsOfTheCall) {
  std::optional<Settings> seen;
  Fault look(On("avcodec_open2").Before([&](PluginCall& call) {
    seen = SettingsOf(*call.context);
  }));
  Call("start", CaptureArgs(Path("take.aac"), 44100, 2).With("bitRate", 96000));
  Append(Noise(kFrameSamples, 2));
  const Settings expected = {44100, 96000, AV_SAMPLE_FMT_FLTP,
                             1,  // AAC LC, in libavcodec's count
                             1,     44100, 2};
  ASSERT_TRUE(seen);
  EXPECT_EQ(*seen, expected);
}

TEST_F(FaultsTest, EveryFrameSaysItsOwnFormat) {
  std::vector<int> rates, formats, channels;
  Fault look(On("avcodec_send_frame").Before([&](PluginCall& call) {
    if (call.frame == nullptr) return;  // the flush
    rates.push_back(call.frame->sample_rate);
    formats.push_back(call.frame->format);
    channels.push_back(call.frame->ch_layout.nb_channels);
  }));
  Start(Path("take.aac"), 44100, 2);
  Append(Noise(kFrameSamples + 1, 2));
  Stop();
  EXPECT_EQ(rates, std::vector<int>(2, 44100));
  EXPECT_EQ(formats, std::vector<int>(2, AV_SAMPLE_FMT_FLTP));
  EXPECT_EQ(channels, std::vector<int>(2, 2));
}

TEST_F(FaultsTest, EachChannelsSamplesGoIntoItsOwnPlane) {
  Bytes pcm;
  for (int i = 0; i < kFrameSamples; ++i) {
    for (int channel = 1; channel <= 6; ++channel) {
      pcm.push_back(static_cast<uint8_t>(i % 256));
      pcm.push_back(static_cast<uint8_t>(channel));
    }
  }
  const SentFrames sent;
  Begin("take.aac", 6);
  Append(pcm);
  ASSERT_EQ(sent.all().size(), 1U);
  for (int channel = 1; channel <= 6; ++channel) {
    std::vector<float> expected;
    for (int i = 0; i < kFrameSamples; ++i) {
      expected.push_back(static_cast<float>(channel * 256 + i % 256) / 32768);
    }
    EXPECT_EQ(sent.all()[0].planes.at(channel - 1), expected) << channel;
  }
}

}  // namespace
}  // namespace corvane_test
