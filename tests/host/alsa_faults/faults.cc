// A capture device that plays a ramp in real time: the sample of each frame is
// the number of the frame, modulo 65536. Its configuration says what it can do
// and when it fails:
//
//   type corvane_faults
//   format S16_LE        also S32_LE, with the ramp in the upper half
//   rate 0               the only one in Hz; 0 for any
//   channels 0           their only number; 0 for any up to eight
//   script "4800 overrun 300 9600 gone 0"
//
// The script is of triples: at which frame it fails, how, and for how many ms
// the ramp goes on unheard before it tells so. The ways are
//
//   overrun   EPIPE, until it is started anew
//   suspend   ESTRPIPE, and it can't resume: it is to be started anew
//   sleep     ESTRPIPE at once, and resuming does nothing until the time is
//   over silent    it says nothing gone      ENODEV, for ever broken    EIO,
//   for ever
#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Fault {
  int64_t at_frame;
  std::string way;
  int64_t ms;
};

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

struct Device {
  snd_pcm_ioplug_t io = {};
  snd_pcm_format_t format = SND_PCM_FORMAT_S16_LE;
  std::vector<Fault> faults;  // still to come
  int64_t start_ns = 0;
  int64_t before_start = 0;    // frames that were heard until then
  int64_t unheard = 0;         // frames of the ramp that were skipped
  int64_t before_prepare = 0;  // frames that were read until then
  int64_t last_read = 0;       // frames, when they were last asked for

  int64_t Frames(int64_t ms) const { return io.rate * ms / 1000; }

  // Frames that the reader has. On mapped memory the same ones may be asked
  // for again before it has.
  int64_t Read() const {
    return before_prepare + static_cast<int64_t>(io.appl_ptr);
  }

  // How far the ramp is.
  int64_t Clock() const {
    return (now_ns() - start_ns) / 1000 * io.rate / 1000000;
  }

  // Frames that were heard: none after the next fault's.
  int64_t Heard() const {
    const int64_t heard = before_start + Clock();
    return faults.empty() ? heard : std::min(heard, faults[0].at_frame);
  }

  bool IsFaultDue() const {
    return !faults.empty() && Read() >= faults[0].at_frame &&
           (faults[0].way == "sleep" || IsFaultOver());
  }
  bool IsFaultOver() const {
    return before_start + Clock() >= faults[0].at_frame + Frames(faults[0].ms);
  }

  // The ramp goes on from where it is now.
  void SkipUnheard() {
    unheard += before_start + Clock() - faults[0].at_frame;
    before_start = faults[0].at_frame;
    start_ns = now_ns();
    faults.erase(faults.begin());
  }
};

Device* device_of(snd_pcm_ioplug_t* io) {
  return static_cast<Device*>(io->private_data);
}

// Returns what the reader is to be told; 0 when it needn't hear of it.
int meet_fault(Device* device) {
  if (!device->IsFaultDue()) return 0;
  const std::string& way = device->faults[0].way;
  if (way == "silent") {
    device->SkipUnheard();
    return 0;
  }
  if (way == "gone") {
    snd_pcm_ioplug_set_state(&device->io, SND_PCM_STATE_DISCONNECTED);
    return -ENODEV;
  }
  if (way == "broken") return -EIO;
  const bool is_overrun = way == "overrun";
  snd_pcm_ioplug_set_state(
      &device->io, is_overrun ? SND_PCM_STATE_XRUN : SND_PCM_STATE_SUSPENDED);
  return is_overrun ? -EPIPE : -ESTRPIPE;
}

int on_start(snd_pcm_ioplug_t* io) {
  Device* const device = device_of(io);
  if (device->start_ns != 0 && device->IsFaultDue()) {
    device->SkipUnheard();
  } else {
    device->start_ns = now_ns();
  }
  itimerspec period = {};
  period.it_value.tv_nsec =
      static_cast<long>(io->period_size * 1000000000LL / io->rate);
  period.it_interval = period.it_value;
  return timerfd_settime(io->poll_fd, 0, &period, nullptr);
}

// What was read is counted from here on, by alsa-lib.
int on_prepare(snd_pcm_ioplug_t* io) {
  Device* const device = device_of(io);
  device->before_prepare = device->last_read;
  return 0;
}

int on_stop(snd_pcm_ioplug_t* /*io*/) { return 0; }

// alsa-lib counts the frames that are heard from each start on.
snd_pcm_sframes_t on_pointer(snd_pcm_ioplug_t* io) {
  Device* const device = device_of(io);
  device->last_read = device->Read();
  // A fault is met by who reads.
  const int64_t ahead = std::max<int64_t>(device->Heard() - device->Read(),
                                          device->IsFaultDue() ? 1 : 0);
  return static_cast<snd_pcm_sframes_t>(
      (static_cast<int64_t>(io->appl_ptr) +
       std::min<int64_t>(ahead, static_cast<int64_t>(io->buffer_size) - 1)) %
      static_cast<int64_t>(io->buffer_size));
}

void write_ramp(const snd_pcm_channel_area_t& area, snd_pcm_uframes_t offset,
                snd_pcm_uframes_t frames, const Device& device) {
  auto* const start = static_cast<uint8_t*>(area.addr) + area.first / 8;
  const size_t step = area.step / 8;
  for (snd_pcm_uframes_t i = 0; i < frames; ++i) {
    const auto value = static_cast<uint16_t>(device.Read() + device.unheard +
                                             static_cast<int64_t>(i));
    uint8_t* const sample = start + (offset + i) * step;
    if (device.format == SND_PCM_FORMAT_S16_LE) {
      std::memcpy(sample, &value, sizeof(value));
    } else {
      const uint32_t wide = static_cast<uint32_t>(value) << 16;
      std::memcpy(sample, &wide, sizeof(wide));
    }
  }
}

snd_pcm_sframes_t on_transfer(snd_pcm_ioplug_t* io,
                              const snd_pcm_channel_area_t* areas,
                              snd_pcm_uframes_t offset,
                              snd_pcm_uframes_t size) {
  Device* const device = device_of(io);
  if (const int error = meet_fault(device); error != 0) return error;
  const int64_t there = device->Heard() - device->Read();
  const auto frames = std::min<snd_pcm_uframes_t>(
      size, static_cast<snd_pcm_uframes_t>(std::max<int64_t>(there, 0)));
  if (frames == 0) return -EAGAIN;
  for (unsigned channel = 0; channel < io->channels; ++channel) {
    write_ramp(areas[channel], offset, frames, *device);
  }
  return static_cast<snd_pcm_sframes_t>(frames);
}

int on_poll(snd_pcm_ioplug_t* io, pollfd* descriptors, unsigned count,
            unsigned short* events) {
  *events = 0;
  if (count != 1 || (descriptors[0].revents & POLLIN) == 0) return 0;
  uint64_t expired = 0;
  if (read(io->poll_fd, &expired, sizeof(expired)) > 0) *events = POLLIN;
  meet_fault(device_of(io));
  return 0;
}

int on_resume(snd_pcm_ioplug_t* io) {
  Device* const device = device_of(io);
  if (device->faults.empty() || device->faults[0].way != "sleep" ||
      !device->IsFaultOver()) {
    return 0;  // alsa-lib takes no notice of what is returned
  }
  device->SkipUnheard();
  snd_pcm_ioplug_set_state(io, SND_PCM_STATE_RUNNING);
  return 0;
}

int on_close(snd_pcm_ioplug_t* io) {
  close(io->poll_fd);
  delete device_of(io);
  return 0;
}

const snd_pcm_ioplug_callback_t kCallbacks = [] {
  snd_pcm_ioplug_callback_t callbacks = {};
  callbacks.start = on_start;
  callbacks.stop = on_stop;
  callbacks.prepare = on_prepare;
  callbacks.pointer = on_pointer;
  callbacks.transfer = on_transfer;
  callbacks.poll_revents = on_poll;
  callbacks.resume = on_resume;
  callbacks.close = on_close;
  return callbacks;
}();

struct Settings {
  snd_pcm_format_t format = SND_PCM_FORMAT_S16_LE;
  long rate = 0;
  long channels = 0;
  std::string script;
};

Settings settings_in(snd_config_t* config) {
  Settings settings;
  snd_config_iterator_t i;
  snd_config_iterator_t next;
  snd_config_for_each(i, next, config) {
    snd_config_t* const entry = snd_config_iterator_entry(i);
    const char* id = "";
    const char* text = "";
    snd_config_get_id(entry, &id);
    const std::string name = id;
    if (name == "rate") snd_config_get_integer(entry, &settings.rate);
    if (name == "channels") snd_config_get_integer(entry, &settings.channels);
    if (name == "format" && snd_config_get_string(entry, &text) == 0) {
      settings.format = snd_pcm_format_value(text);
    }
    if (name == "script" && snd_config_get_string(entry, &text) == 0) {
      settings.script = text;
    }
  }
  return settings;
}

void set_range(snd_pcm_ioplug_t* io, int what, long only, unsigned least,
               unsigned most) {
  snd_pcm_ioplug_set_param_minmax(
      io, what, only == 0 ? least : static_cast<unsigned>(only),
      only == 0 ? most : static_cast<unsigned>(only));
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
  set_range(io, SND_PCM_IOPLUG_HW_PERIODS, 0, 2, 1024);
}

}  // namespace

extern "C" {
SND_PCM_PLUGIN_DEFINE_FUNC(corvane_faults) {
  (void)root;
  const Settings settings = settings_in(conf);
  auto device = std::make_unique<Device>();
  device->format = settings.format;
  device->faults = faults_in(settings.script);
  device->io.version = SND_PCM_IOPLUG_VERSION;
  device->io.name = "A ramp that fails when told to";
  device->io.callback = &kCallbacks;
  device->io.private_data = device.get();
  device->io.poll_fd =
      timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  device->io.poll_events = POLLIN;
  const int failed = snd_pcm_ioplug_create(&device->io, name, stream, mode);
  if (failed < 0) return failed;
  set_abilities(&device->io, settings);
  *pcmp = device->io.pcm;
  static_cast<void>(device.release());  // on_close() has it now
  return 0;
}
SND_PCM_PLUGIN_SYMBOL(corvane_faults)
}
