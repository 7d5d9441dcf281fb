#include "audio/microphone.h"

#include <glib.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace corvane {
namespace {

constexpr int64_t kUsPerSecond = 1000000;
// Between two looks at a device whose descriptor says that there is something
// to read where nothing is.
constexpr int64_t kIdleRestUs = 20000;
constexpr int64_t kSuspendRestUs = 100000;
// Between two reads where nothing can be waited for, as with ALSA's null.
constexpr int64_t kPolledRestUs = 50000;

// Goes on while the machine sleeps: audio is missing for that time too.
int64_t now_us() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return now.tv_sec * kUsPerSecond + now.tv_nsec / 1000;
}

// What the device hands on at a time; 1 where it doesn't say.
snd_pcm_sframes_t period_of(snd_pcm_t* pcm) {
  snd_pcm_uframes_t buffer = 0;
  snd_pcm_uframes_t period = 1;
  snd_pcm_get_params(pcm, &buffer, &period);
  return static_cast<snd_pcm_sframes_t>(period);
}

bool watch(const FileDescriptor& set, int operation, int fd, uint32_t events) {
  epoll_event event = {};
  event.events = events;
  return epoll_ctl(set.get(), operation, fd, &event) == 0;
}

}  // namespace

// It is resting until the first read, for which nothing is waited for.
Microphone::Microphone(PcmPtr pcm, std::string name, PcmFormat format,
                       OnLoss on_loss)
    : pcm_(std::move(pcm)),
      name_(std::move(name)),
      format_(format),
      on_loss_(std::move(on_loss)),
      losses_(format.sample_rate),
      wake_ups_(epoll_create1(EPOLL_CLOEXEC)),
      device_(epoll_create1(EPOLL_CLOEXEC)),
      rest_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)),
      period_frames_(period_of(pcm_.get())) {
  if (!wake_ups_.is_open() || !device_.is_open() || !rest_.is_open()) {
    Fail("it can't be waited for", -errno);
    return;
  }
  watch(wake_ups_, EPOLL_CTL_ADD, device_.get(), 0);
  watch(wake_ups_, EPOLL_CTL_ADD, rest_.get(), EPOLLIN);
  Rest(0);
}

size_t Microphone::Read(uint8_t* out, size_t size) {
  if (has_ended()) return 0;
  EndRest();
  if (!has_started_) {
    has_started_ = true;
    const int failed = snd_pcm_start(pcm_.get());
    if (failed < 0) Fail("it can't be started", failed);
    WatchDescriptors();
    return 0;
  }
  AcknowledgeEvents();
  const size_t read = ReadFrames(out, size / format_.bytes_per_frame());
  if (is_polled_ && !is_resting_) Rest(kPolledRestUs);
  return read * format_.bytes_per_frame();
}

std::string Microphone::how_to_continue() const {
  if (name_.empty()) return "";
  g_autofree gchar* quoted = g_shell_quote(name_.c_str());
  return std::string("-D ") + quoted;
}

void Microphone::WatchDescriptors() {
  const int count = snd_pcm_poll_descriptors_count(pcm_.get());
  descriptors_.resize(static_cast<size_t>(std::max(count, 0)));
  snd_pcm_poll_descriptors(pcm_.get(), descriptors_.data(),
                           static_cast<unsigned>(descriptors_.size()));
  is_polled_ = descriptors_.empty();
  // poll(2) and epoll(7) share the numbers of their events.
  for (const pollfd& entry : descriptors_) {
    is_polled_ |= !watch(device_, EPOLL_CTL_ADD, entry.fd,
                         static_cast<uint32_t>(entry.events));
  }
  if (is_polled_) Rest(kPolledRestUs);
}

// Some plug-ins make their descriptor readable until they are asked what it
// means.
void Microphone::AcknowledgeEvents() {
  const auto count = static_cast<unsigned>(descriptors_.size());
  if (poll(descriptors_.data(), count, 0) <= 0) return;
  unsigned short events = 0;
  snd_pcm_poll_descriptors_revents(pcm_.get(), descriptors_.data(), count,
                                   &events);
}

// Until it is over the device wakes nobody.
void Microphone::Rest(int64_t us) {
  itimerspec time = {};
  time.it_value.tv_nsec = std::max<int64_t>(us * 1000, 1);
  timerfd_settime(rest_.get(), 0, &time, nullptr);
  watch(wake_ups_, EPOLL_CTL_MOD, device_.get(), 0);
  is_resting_ = true;
}

void Microphone::EndRest() {
  if (!is_resting_) return;
  const itimerspec none = {};
  timerfd_settime(rest_.get(), 0, &none, nullptr);
  watch(wake_ups_, EPOLL_CTL_MOD, device_.get(), EPOLLIN);
  is_resting_ = false;
}

size_t Microphone::ReadFrames(uint8_t* out, size_t frames) {
  const snd_pcm_sframes_t got = snd_pcm_readi(pcm_.get(), out, frames);
  if (got < 0 && got != -EAGAIN) {
    Recover(got);
    return 0;
  }
  const size_t read = got < 0 ? 0 : static_cast<size_t>(got);
  read_frames_ += static_cast<int64_t>(read);
  if (read == 0) Rest(kIdleRestUs);
  WatchForLoss();
  return read;
}

// Where a period is left a backlog may be under way, of which more is to come.
// While nothing comes nothing can be told of it: it may yet come.
void Microphone::WatchForLoss() {
  const snd_pcm_sframes_t left = snd_pcm_avail_update(pcm_.get());
  if (left < 0 || left >= period_frames_)
    return;  // reading will tell of errors
  const int64_t come = read_frames_ + left;
  if (std::exchange(come_frames_, come) == come) return;
  const auto loss = losses_.OnDrained(now_us(), come);
  if (loss) on_loss_(*loss);
}

void Microphone::Recover(int64_t error) {
  if (error == -EINTR) return;
  if (error == -EPIPE) return StartAgain(LossCause::kOverrun);
  if (error != -ESTRPIPE) return Fail("it stopped", error);
  const int resumed = snd_pcm_resume(pcm_.get());
  if (resumed == -EAGAIN) return Rest(kSuspendRestUs);
  // Not every device can go on by itself, nor does every plug-in say so.
  if (resumed < 0 || snd_pcm_state(pcm_.get()) == SND_PCM_STATE_SUSPENDED) {
    return StartAgain(LossCause::kSuspend);
  }
  losses_.OnReported(LossCause::kSuspend, read_frames_);
}

void Microphone::StartAgain(LossCause cause) {
  int failed = snd_pcm_prepare(pcm_.get());
  if (failed == 0) failed = snd_pcm_start(pcm_.get());
  if (failed < 0) {
    Fail("it stopped, and can't be started again", failed);
    return;
  }
  losses_.OnReported(cause, read_frames_);
}

void Microphone::Fail(const char* what, int64_t error) {
  const bool is_gone = error == -ENODEV || error == -ENXIO;
  error_ = std::string(is_gone ? "the device has vanished" : what) + " (" +
           snd_strerror(static_cast<int>(error)) + ")";
}

std::unique_ptr<AudioSource> open_microphone(const std::string& name,
                                             const PcmFormat& wanted,
                                             OnLoss on_loss,
                                             DeviceError* error) {
  PcmPtr pcm = open_pcm(name, error);
  if (pcm == nullptr) return nullptr;
  const PcmFormat agreed = agree_on_format(pcm.get(), name, wanted, error);
  if (agreed.sample_rate == 0) return nullptr;
  return std::make_unique<Microphone>(std::move(pcm), name, agreed,
                                      std::move(on_loss));
}

}  // namespace corvane
