// `corvane devices`: what is listed, what isn't, and how.
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/sound_config.h"
#include "host/sound_server.h"

namespace corvane_test {
namespace {

using nlohmann::json;

// With what a list holds beside devices: silence, a converter, a sink, and what
// isn't there.
constexpr char kMany[] = R"(
pcm.!default { type corvane_faults
  hint { show on description "The desk
microphone" } }
pcm."my mic, left" { type corvane_faults hint { show on description "Lapel" } }
pcm.null { type null hint { show on description "Silence" } }
pcm.samplerate { type plug slave.pcm "default" hint { show on } }
pcm.gone { type hw card 7 hint { show on description "Unplugged" } }
pcm.hidden { type corvane_faults }
)";

class SoundDevicesTest : public ProgramTest {
 protected:
  ChildResult Devices(const std::string& devices, const Words& more = {}) {
    const SoundConfig config(devices);
    ChildSetup setup;
    setup.environment = config.environment();
    setup.environment["LANG"] = "C";
    Words words = {"devices"};
    words.insert(words.end(), more.begin(), more.end());
    return Corvane(words, setup);
  }
};

TEST_F(SoundDevicesTest, WhatCanRecordIsListedALineEachTheDefaultFirst) {
  const ChildResult run = Devices(kMany);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Lines(run.out), (Words{"* default       The desk, microphone",
                                   "  my mic, left  Lapel"}));
}

TEST_F(SoundDevicesTest, WhatIsBusyOrForbiddenIsThereAllTheSame) {
  const ChildResult run = Devices(R"(
pcm.!default { type corvane_faults open busy hint { show on } }
pcm.desk { type corvane_faults open denied hint { show on } }
pcm.gone { type corvane_faults open unplugged hint { show on } }
)");
  EXPECT_EQ(run.status, 0);
  ASSERT_EQ(Lines(run.out).size(), 2U) << run.out;
  EXPECT_EQ(Lines(run.out)[0].substr(0, 9), "* default");
  EXPECT_EQ(Lines(run.out)[1].substr(0, 6), "  desk");
}

TEST_F(SoundDevicesTest, JsonIsOneArray) {
  const ChildResult run = Devices(kMany, {"--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(Lines(run.out).size(), 1U) << run.out;
  EXPECT_EQ(json::parse(run.out), json::parse(R"([
    {"name": "default", "description": "The desk, microphone",
     "isDefault": true},
    {"name": "my mic, left", "description": "Lapel", "isDefault": false}])"));
}

TEST_F(SoundDevicesTest, ADefaultThatIsNotInAlsasListIsThereAllTheSame) {
  const ChildResult run = Devices("pcm.!default { type corvane_faults }\n");
  EXPECT_EQ(Lines(run.out),
            Words{"* default  What ALSA takes when none is named"});
}

TEST_F(SoundDevicesTest, NoDeviceIsASentenceAndAnEmptyArray) {
  const ChildResult run = Devices("");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err,
            "corvane: there is nothing to record from; plug a microphone or a "
            "sound card in, or start the sound server\n");
  EXPECT_EQ(Devices("", {"--json", "--quiet"}).out, "[]\n");
}

}  // namespace
}  // namespace corvane_test
