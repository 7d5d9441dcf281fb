// The sound devices that can be recorded from.
#ifndef CORVANE_HOST_AUDIO_SOUND_DEVICES_H_
#define CORVANE_HOST_AUDIO_SOUND_DEVICES_H_

#include <string>
#include <vector>

namespace corvane {

struct SoundDevice {
  std::string name;         // for ALSA
  std::string description;  // one line
  bool is_default = false;
};

// Opens each to see, so what is listed was there a moment ago. The default one
// comes first.
std::vector<SoundDevice> list_sound_devices();

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_SOUND_DEVICES_H_
