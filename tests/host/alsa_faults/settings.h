// What the configuration of such a device says.
#ifndef CORVANE_TESTS_HOST_ALSA_FAULTS_SETTINGS_H_
#define CORVANE_TESTS_HOST_ALSA_FAULTS_SETTINGS_H_

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>

#include <string>

namespace corvane_alsa_faults {

struct Settings {
  snd_pcm_format_t format = SND_PCM_FORMAT_S16_LE;
  long rate = 0;
  long channels = 0;
  long periods = 0;
  std::string script;
  int open_error = 0;     // of errno, negative
  bool is_stuck = false;  // when it is opened
  int settle_error = 0;   // likewise
};

Settings settings_in(snd_config_t* config);

// What it lets alsa-lib choose from.
void set_abilities(snd_pcm_ioplug_t* io, const Settings& settings);

}  // namespace corvane_alsa_faults

#endif  // CORVANE_TESTS_HOST_ALSA_FAULTS_SETTINGS_H_
