// What is asked of a device, what it can do, and ALSA's converters between.
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/sound_config.h"

namespace corvane_test {
namespace {

using nlohmann::json;

// Devices of hardware's kinds, each ended by itself. The fast one has whole
// periods, which ALSA's converter of rates waits for.
constexpr char kDevices[] = R"(
pcm.studio { type corvane_faults channels 8 script "12000 gone 0" }
pcm.wide { type corvane_faults format S32_LE script "12000 gone 0" }
pcm.fast { type corvane_faults rate 192000 script "72000 gone 0" }
pcm.camera { type corvane_faults rate 32000 channels 2 script "8000 gone 0" }
pcm."my mic, left" { type corvane_faults script "12000 gone 0" }
pcm.studio_two { type plug slave.pcm "studio" }
pcm.wide_plug { type plug slave.pcm "wide" }
pcm.fast_plug { type plug slave.pcm "fast" }
)";

class SoundFormatTest : public ProgramTest {
 protected:
  ChildResult Record(const std::string& device, const Words& more = {}) {
    const SoundConfig config(kDevices);
    ChildSetup setup;
    setup.environment = config.environment();
    Words words = {"record", "-D", device, take_};
    words.insert(words.end(), more.begin(), more.end());
    return Corvane(words, setup);
  }

  void ShouldRecord(const ChildResult& run, int rate, int channels,
                    double seconds = 0.25) {
    ASSERT_NE(run.out, "") << run.err;
    const json figures = json::parse(run.out);
    EXPECT_EQ(figures["sampleRate"], rate);
    EXPECT_EQ(figures["channels"], channels);
    EXPECT_NEAR(figures["sampleFrames"].get<double>(), rate * seconds,
                rate / 20);
    EXPECT_EQ(DecoderComplaints(take_), "");
  }

  void ShouldRefuse(const ChildResult& run, const std::string& sentence) {
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.status, 0);
    ASSERT_NE(run.err, "");
    EXPECT_EQ(Lines(run.err).front(), "corvane: " + sentence);
    EXPECT_FALSE(Exists(take_));
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(SoundFormatTest, ANameWithSpacesAndCommasIsOneName) {
  ShouldRecord(Record("my mic, left"), 48000, 1);
}

TEST_F(SoundFormatTest, WhatIsLeftOutIsTheNearestThatTheDeviceHas) {
  ShouldRecord(Record("camera"), 32000, 2);
}

TEST_F(SoundFormatTest, ARateThatTheDeviceLacksComesWithThoseItHas) {
  const ChildResult run = Record("camera", {"-r", "44100"});
  EXPECT_EQ(run.status, 2);
  ShouldRefuse(run,
               "device camera: 44100 Hz can't be had from it for a capture; it "
               "can do 32000 Hz");
}

TEST_F(SoundFormatTest, ChannelsThatTheDeviceLacksComeWithThoseItHas) {
  ShouldRefuse(Record("camera", {"-c", "1"}),
               "device camera: 1 channels can't be had from it for a capture; "
               "it can do 2 channels");
}

TEST_F(SoundFormatTest, ARateThatNoCaptureHasIsRefusedWithThoseThatItHas) {
  ShouldRefuse(
      Record("wide_plug", {"-r", "44000"}),
      "device wide_plug: 44000 Hz can't be had from it for a capture; "
      "it can do 7350, 8000, 11025, 12000, 16000, 22050, 24000, 32000, "
      "44100, 48000, 64000, 88200, 96000 Hz");
}

TEST_F(SoundFormatTest, TwoOfEightChannelsComeByTheConverter) {
  ShouldRefuse(Record("studio", {"-c", "2"}),
               "device studio: 2 channels can't be had from it for a capture; "
               "ALSA's converter may: -D 'plug:'\\''studio'\\'''");
  ShouldRecord(Record("studio_two", {"-c", "2"}), 48000, 2);
}

TEST_F(SoundFormatTest, ThirtyTwoBitsComeByTheConverter) {
  ShouldRefuse(Record("wide"),
               "device wide: it has no interleaved 16-bit samples; ALSA's "
               "converter may: -D 'plug:'\\''wide'\\'''");
  ShouldRecord(Record("wide_plug"), 48000, 1);
}

TEST_F(SoundFormatTest, ARateBeyondAdtsComesByTheConverter) {
  ShouldRefuse(Record("fast"),
               "device fast: it can do nothing that a capture can hold; ALSA's "
               "converter may: -D 'plug:'\\''fast'\\'''");
  ShouldRecord(Record("fast_plug"), 48000, 1, 0.375);
  ShouldRecord(Record("fast_plug", {"-r", "96000"}), 96000, 1, 0.375);
}

}  // namespace
}  // namespace corvane_test
