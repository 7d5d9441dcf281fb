// A capture device that plays a ramp in real time: the sample of each frame is
// the number of the frame, modulo 65536. Its configuration says what it can do
// and when it fails:
//
//   type corvane_faults
//   format S16_LE        also S32_LE, with the ramp in the upper half
//   rate 0               the only one in Hz; 0 for any
//   channels 0           their only number; 0 for any up to eight
//   periods 0            the most in its buffer; 0 for any up to 1024
//   script "4800 overrun 300 9600 gone 0"
//   open busy            it can't be opened: EBUSY; also denied (EACCES),
//                        forbidden (EPERM), unplugged (ENODEV), absent (ENXIO)
//                        and broken (EIO); or it never answers: stuck
//   settle busy          likewise, but only when its format is settled
//
// The script is of triples: at which frame it fails, how, and for how many ms
// the ramp goes on unheard before it tells so. The ways are
//
//   - overrun: EPIPE, until it is started anew
//   - suspend: ESTRPIPE, and it can't resume: it is to be started anew
//   - sleep: ESTRPIPE at once, and resuming does nothing until the time is over
//   - silent: it says nothing
//   - late: nothing comes, though its descriptor is readable, and then the ramp
//     does, whole
//   - gone: ENODEV, for ever
//   - broken: EIO, for ever
#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>

#include "ramp.h"
#include "settings.h"

namespace corvane_alsa_faults {
namespace {

Device* device_of(snd_pcm_ioplug_t* io) {
  return static_cast<Device*>(io->private_data);
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

// Who settles the parameters may be told that another has the device.
int on_hw_params(snd_pcm_ioplug_t* io, snd_pcm_hw_params_t* /*params*/) {
  return device_of(io)->settle_error;
}

int on_stop(snd_pcm_ioplug_t* /*io*/) { return 0; }

// alsa-lib counts the frames that are heard from each start on.
snd_pcm_sframes_t on_pointer(snd_pcm_ioplug_t* io) {
  Device* const device = device_of(io);
  device->last_read = device->Read();
  // A fault is met by who reads. And what was said to be there stays: going
  // back would be taken for a whole turn of the buffer.
  const int64_t ahead = std::max(
      {device->Heard() - device->Read(), int64_t{device->IsFaultDue() ? 1 : 0},
       static_cast<int64_t>(io->hw_ptr) - static_cast<int64_t>(io->appl_ptr)});
  return static_cast<snd_pcm_sframes_t>(
      (static_cast<int64_t>(io->appl_ptr) +
       std::min<int64_t>(ahead, static_cast<int64_t>(io->buffer_size) - 1)) %
      static_cast<int64_t>(io->buffer_size));
}

snd_pcm_sframes_t on_transfer(snd_pcm_ioplug_t* io,
                              const snd_pcm_channel_area_t* areas,
                              snd_pcm_uframes_t offset,
                              snd_pcm_uframes_t size) {
  Device* const device = device_of(io);
  if (const int error = device->MeetFault(); error != 0) return error;
  const int64_t there = device->Heard() - device->Read();
  const auto frames = std::min<snd_pcm_uframes_t>(
      size, static_cast<snd_pcm_uframes_t>(std::max<int64_t>(there, 0)));
  if (frames == 0) return -EAGAIN;
  for (unsigned channel = 0; channel < io->channels; ++channel) {
    device->Write(areas[channel], offset, frames);
  }
  return static_cast<snd_pcm_sframes_t>(frames);
}

int on_poll(snd_pcm_ioplug_t* io, pollfd* descriptors, unsigned count,
            unsigned short* events) {
  *events = 0;
  if (count != 1 || (descriptors[0].revents & POLLIN) == 0) return 0;
  // As with hardware, the descriptor of one that sleeps is always readable.
  if (snd_pcm_state(io->pcm) == SND_PCM_STATE_SUSPENDED) {
    *events = POLLERR;
    return 0;
  }
  if (device_of(io)->IsLate()) {
    *events = POLLIN;
    return 0;
  }
  uint64_t expired = 0;
  if (read(io->poll_fd, &expired, sizeof(expired)) > 0) *events = POLLIN;
  device_of(io)->MeetFault();
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
  callbacks.hw_params = on_hw_params;
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

}  // namespace

extern "C" {
SND_PCM_PLUGIN_DEFINE_FUNC(corvane_faults) {
  (void)root;
  const Settings settings = settings_in(conf);
  while (settings.is_stuck) pause();
  if (settings.open_error != 0) return settings.open_error;
  auto device = std::make_unique<Device>();
  device->format = settings.format;
  device->settle_error = settings.settle_error;
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

}  // namespace corvane_alsa_faults
