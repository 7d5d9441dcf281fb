// ALSA as a test wants it: nothing but the devices of a configuration of its
// own, with neither hardware nor a server.
#ifndef CORVANE_TESTS_HOST_SOUND_CONFIG_H_
#define CORVANE_TESTS_HOST_SOUND_CONFIG_H_

#include <map>
#include <string>

#include "support/files.h"

namespace corvane_test {

class SoundConfig {
 public:
  // `devices` are definitions as in an asound.conf. The type corvane_faults is
  // known, and so are ALSA's own.
  explicit SoundConfig(const std::string& devices);
  SoundConfig(const SoundConfig&) = delete;
  SoundConfig& operator=(const SoundConfig&) = delete;

  // For a child process.
  std::map<std::string, std::string> environment() const;

 private:
  TempDir dir_;
};

// A SoundConfig for this process, as long as this lives.
class SoundHere {
 public:
  explicit SoundHere(const std::string& devices);
  ~SoundHere();

 private:
  SoundConfig config_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SOUND_CONFIG_H_
