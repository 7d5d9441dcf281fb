#include "ramp.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <sstream>

namespace corvane_alsa_faults {

std::vector<Fault> faults_in(const std::string& script) {
  std::istringstream words(script);
  std::vector<Fault> faults;
  Fault fault;
  while (words >> fault.at_frame >> fault.way >> fault.ms) {
    faults.push_back(fault);
  }
  return faults;
}

int64_t now_ns() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

int64_t Device::Read() const {
  return before_prepare + static_cast<int64_t>(io.appl_ptr);
}

int64_t Device::Clock() const {
  return (now_ns() - start_ns) / 1000 * io.rate / 1000000;
}

int64_t Device::Heard() const {
  const int64_t heard = before_start + Clock();
  return faults.empty() ? heard : std::min(heard, faults[0].at_frame);
}

bool Device::IsFaultDue() const {
  return !faults.empty() && Read() >= faults[0].at_frame &&
         (faults[0].way == "sleep" || IsFaultOver());
}

bool Device::IsFaultOver() const {
  return before_start + Clock() >= faults[0].at_frame + Frames(faults[0].ms);
}

bool Device::IsLate() const {
  return !faults.empty() && faults[0].way == "late" &&
         Read() >= faults[0].at_frame && !IsFaultOver();
}

void Device::SkipUnheard() {
  unheard += before_start + Clock() - faults[0].at_frame;
  before_start = faults[0].at_frame;
  start_ns = now_ns();
  faults.erase(faults.begin());
}

int Device::MeetFault() {
  if (!IsFaultDue()) return 0;
  const std::string& way = faults[0].way;
  if (way == "silent") {
    SkipUnheard();
    return 0;
  }
  if (way == "late") {
    faults.erase(faults.begin());
    return 0;
  }
  if (way == "gone") {
    snd_pcm_ioplug_set_state(&io, SND_PCM_STATE_DISCONNECTED);
    return -ENODEV;
  }
  if (way == "broken") return -EIO;
  const bool is_overrun = way == "overrun";
  snd_pcm_ioplug_set_state(
      &io, is_overrun ? SND_PCM_STATE_XRUN : SND_PCM_STATE_SUSPENDED);
  return is_overrun ? -EPIPE : -ESTRPIPE;
}

void Device::Write(const snd_pcm_channel_area_t& area, snd_pcm_uframes_t offset,
                   snd_pcm_uframes_t frames) const {
  auto* const start = static_cast<uint8_t*>(area.addr) + area.first / 8;
  const size_t step = area.step / 8;
  for (snd_pcm_uframes_t i = 0; i < frames; ++i) {
    const auto value =
        static_cast<uint16_t>(Read() + unheard + static_cast<int64_t>(i));
    uint8_t* const sample = start + (offset + i) * step;
    if (format == SND_PCM_FORMAT_S16_LE) {
      std::memcpy(sample, &value, sizeof(value));
    } else {
      const uint32_t wide = static_cast<uint32_t>(value) << 16;
      std::memcpy(sample, &wide, sizeof(wide));
    }
  }
}

}  // namespace corvane_alsa_faults
