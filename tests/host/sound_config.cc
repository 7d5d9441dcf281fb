#include "host/sound_config.h"

#include <alsa/asoundlib.h>

#include <cstdlib>

namespace corvane_test {
namespace {

constexpr char kPath[] = "ALSA_CONFIG_PATH";

const std::string kHead =
    "pcm_type.corvane_faults { lib \"" CORVANE_ALSA_FAULTS "\" }\n";

// Else alsa-lib would write its complaints into the test's output.
void say_nothing(const char*, int, const char*, int, const char*, ...) {}

}  // namespace

SoundConfig::SoundConfig(const std::string& devices) {
  const std::string text = kHead + devices;
  WriteFile(dir_.Path("asound.conf"), Bytes(text.begin(), text.end()));
}

std::map<std::string, std::string> SoundConfig::environment() const {
  return {{kPath, dir_.Path("asound.conf")},
          {"HOME", dir_.path()},
          {"XDG_RUNTIME_DIR", dir_.path()}};
}

SoundHere::SoundHere(const std::string& devices) : config_(devices) {
  setenv(kPath, config_.environment()[kPath].c_str(), 1);
  snd_lib_error_set_handler(say_nothing);
}

SoundHere::~SoundHere() {
  unsetenv(kPath);
  snd_config_update_free_global();
}

}  // namespace corvane_test
