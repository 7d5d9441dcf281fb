// A device without hardware: a ramp that goes on by the clock, and what is to
// happen to it.
#ifndef CORVANE_TESTS_HOST_ALSA_FAULTS_RAMP_H_
#define CORVANE_TESTS_HOST_ALSA_FAULTS_RAMP_H_

#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>

#include <cstdint>
#include <string>
#include <vector>

namespace corvane_alsa_faults {

struct Fault {
  int64_t at_frame;
  std::string way;
  int64_t ms;
};

std::vector<Fault> faults_in(const std::string& script);

// By the monotonic clock.
int64_t now_ns();

struct Device {
  snd_pcm_ioplug_t io = {};
  snd_pcm_format_t format = SND_PCM_FORMAT_S16_LE;
  int settle_error = 0;       // of errno, negative
  std::vector<Fault> faults;  // still to come
  int64_t start_ns = 0;
  int64_t before_start = 0;    // frames that were heard until then
  int64_t unheard = 0;         // frames of the ramp that were skipped
  int64_t before_prepare = 0;  // frames that were read until then
  int64_t last_read = 0;       // frames, when they were last asked for

  // Frames that the reader has. On mapped memory the same ones may be asked
  // for again before it has.
  int64_t Read() const;

  // Frames that were heard: none after the next fault's.
  int64_t Heard() const;

  bool IsFaultDue() const;
  bool IsFaultOver() const;
  bool IsLate() const;

  // The ramp goes on from where it is now.
  void SkipUnheard();

  // Returns what the reader is to be told; 0 when it needn't hear of it.
  int MeetFault();

  // Into one channel's memory, from the first frame that isn't read yet.
  void Write(const snd_pcm_channel_area_t& area, snd_pcm_uframes_t offset,
             snd_pcm_uframes_t frames) const;

 private:
  int64_t Frames(int64_t ms) const { return io.rate * ms / 1000; }
  // How far the ramp is.
  int64_t Clock() const;
};

}  // namespace corvane_alsa_faults

#endif  // CORVANE_TESTS_HOST_ALSA_FAULTS_RAMP_H_
