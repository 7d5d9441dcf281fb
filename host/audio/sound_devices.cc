#include "audio/sound_devices.h"

#include <alsa/asoundlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "audio/sound_device.h"

namespace corvane {
namespace {

constexpr char kDefault[] = "default";

// What ALSA lists beside devices: silence, converters that would record from
// the first card in another way, and roads to systems that are looked for
// noisily. They can still be named.
constexpr std::array<std::string_view, 10> kNoDevices = {
    "null",  "lavrate",  "samplerate", "speexrate", "speex",
    "upmix", "vdownmix", "jack",       "oss",       "usbstream"};

struct HintsFree {
  void operator()(void** hints) const { snd_device_name_free_hint(hints); }
};

struct TextFree {
  void operator()(char* text) const { std::free(text); }
};

// Empty where the hint has no such field.
std::string field(const void* hint, const char* id) {
  const std::unique_ptr<char, TextFree> text(
      snd_device_name_get_hint(hint, id));
  return text == nullptr ? "" : text.get();
}

std::string in_one_line(std::string text) {
  for (size_t end = text.find('\n'); end != std::string::npos;
       end = text.find('\n', end)) {
    text.replace(end, 1, ", ");
  }
  return text;
}

bool is_device(const std::string& name) {
  return std::find(kNoDevices.begin(), kNoDevices.end(),
                   name.substr(0, name.find(':'))) == kNoDevices.end();
}

// One that is busy, or not ours, is there all the same.
bool can_record(const std::string& name) {
  snd_pcm_t* pcm = nullptr;
  const int failed = snd_pcm_open(&pcm, name.c_str(), SND_PCM_STREAM_CAPTURE,
                                  SND_PCM_NONBLOCK);
  const PcmPtr closer(failed < 0 ? nullptr : pcm);
  return failed >= 0 || failed == -EBUSY || failed == -EACCES;
}

std::vector<SoundDevice> hinted_devices() {
  void** hints = nullptr;
  if (snd_device_name_hint(-1, "pcm", &hints) < 0) return {};
  const std::unique_ptr<void*, HintsFree> owned(hints);
  std::vector<SoundDevice> devices;
  for (; *hints != nullptr; ++hints) {
    const std::string name = field(*hints, "NAME");
    if (field(*hints, "IOID") == "Output" || !is_device(name)) continue;
    devices.push_back(
        {name, in_one_line(field(*hints, "DESC")), name == kDefault});
  }
  return devices;
}

}  // namespace

// ALSA has a default even where its list names none.
std::vector<SoundDevice> list_sound_devices() {
  std::vector<SoundDevice> devices = hinted_devices();
  const auto own =
      std::find_if(devices.begin(), devices.end(),
                   [](const SoundDevice& device) { return device.is_default; });
  if (own != devices.end()) {
    std::rotate(devices.begin(), own, own + 1);
  } else {
    devices.insert(devices.begin(),
                   {kDefault, "What ALSA takes when none is named", true});
  }
  devices.erase(std::remove_if(devices.begin(), devices.end(),
                               [](const SoundDevice& device) {
                                 return !can_record(device.name);
                               }),
                devices.end());
  return devices;
}

}  // namespace corvane
