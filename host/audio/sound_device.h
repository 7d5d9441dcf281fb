// Opening a sound device to record from it, by alsa-lib.
#ifndef CORVANE_HOST_AUDIO_SOUND_DEVICE_H_
#define CORVANE_HOST_AUDIO_SOUND_DEVICE_H_

#include <alsa/asoundlib.h>

#include <memory>
#include <string>

#include "audio/audio_source.h"

namespace corvane {

struct PcmCloser {
  void operator()(snd_pcm_t* pcm) const { snd_pcm_close(pcm); }
};
using PcmPtr = std::unique_ptr<snd_pcm_t, PcmCloser>;

// Why a device can't be recorded from, as a clause with the way out.
struct DeviceError {
  std::string text;
  bool is_of_format = false;  // of what was asked for, not of the device
};

// What the device of this name is called in a message; `name` is empty for the
// default one.
std::string device_title(const std::string& name);

// `name`, or what ALSA calls the device that is taken without one.
std::string alsa_name(const std::string& name);

// Opens a device, not blocking and not started. NULL with `error` filled when
// that fails.
PcmPtr open_pcm(const std::string& name, DeviceError* error);

// Agrees with the device on signed 16 bits and on `wanted`, of which a field of
// 0 is left to it: 48000 Hz and 1 channel, or the nearest that a capture can
// have. Returns what was agreed on; a rate of 0 with `error` filled when
// nothing was: it says what the device can do.
PcmFormat agree_on_format(snd_pcm_t* pcm, const std::string& name,
                          const PcmFormat& wanted, DeviceError* error);

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_SOUND_DEVICE_H_
