#include "settings.h"

#include <cerrno>

namespace corvane_alsa_faults {
namespace {

int error_of(const std::string& word) {
  if (word == "busy") return -EBUSY;
  if (word == "denied") return -EACCES;
  if (word == "forbidden") return -EPERM;
  if (word == "unplugged") return -ENODEV;
  if (word == "absent") return -ENXIO;
  return word == "broken" ? -EIO : 0;
}

std::string text_of(snd_config_t* entry) {
  const char* text = "";
  return snd_config_get_string(entry, &text) == 0 ? text : "";
}

void set_range(snd_pcm_ioplug_t* io, int what, long only, unsigned least,
               unsigned most) {
  snd_pcm_ioplug_set_param_minmax(
      io, what, only == 0 ? least : static_cast<unsigned>(only),
      only == 0 ? most : static_cast<unsigned>(only));
}

}  // namespace

Settings settings_in(snd_config_t* config) {
  Settings settings;
  snd_config_iterator_t i;
  snd_config_iterator_t next;
  snd_config_for_each(i, next, config) {
    snd_config_t* const entry = snd_config_iterator_entry(i);
    const char* id = "";
    snd_config_get_id(entry, &id);
    const std::string name = id;
    if (name == "rate") snd_config_get_integer(entry, &settings.rate);
    if (name == "channels") snd_config_get_integer(entry, &settings.channels);
    if (name == "periods") snd_config_get_integer(entry, &settings.periods);
    if (name == "format") {
      settings.format = snd_pcm_format_value(text_of(entry).c_str());
    }
    if (name == "script") settings.script = text_of(entry);
    if (name == "open") {
      settings.open_error = error_of(text_of(entry));
      settings.is_stuck = text_of(entry) == "stuck";
    }
    if (name == "settle") settings.settle_error = error_of(text_of(entry));
  }
  return settings;
}

void set_abilities(snd_pcm_ioplug_t* io, const Settings& settings) {
  // ALSA's converters stand on mapped memory.
  const unsigned access[] = {SND_PCM_ACCESS_RW_INTERLEAVED,
                             SND_PCM_ACCESS_MMAP_INTERLEAVED};
  const auto format = static_cast<unsigned>(settings.format);
  snd_pcm_ioplug_set_param_list(io, SND_PCM_IOPLUG_HW_ACCESS, 2, access);
  snd_pcm_ioplug_set_param_list(io, SND_PCM_IOPLUG_HW_FORMAT, 1, &format);
  set_range(io, SND_PCM_IOPLUG_HW_RATE, settings.rate, 4000, 192000);
  set_range(io, SND_PCM_IOPLUG_HW_CHANNELS, settings.channels, 1, 8);
  set_range(io, SND_PCM_IOPLUG_HW_PERIOD_BYTES, 0, 64, 1 << 20);
  set_range(io, SND_PCM_IOPLUG_HW_BUFFER_BYTES, 0, 256, 4 << 20);
  snd_pcm_ioplug_set_param_minmax(
      io, SND_PCM_IOPLUG_HW_PERIODS, 2,
      settings.periods == 0 ? 1024 : static_cast<unsigned>(settings.periods));
}

}  // namespace corvane_alsa_faults
