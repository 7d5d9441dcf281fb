#include "terminal/keyboard.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

// A shell may bring a job to the foreground without telling it.
constexpr guint kForegroundMs = 1000;

constexpr char kEscape = '\x1b';

}  // namespace

Keyboard::Keyboard(int fd, Console* console, std::function<void(char)> on_key)
    : fd_(fd),
      console_(console),
      on_key_(std::move(on_key)),
      job_control_([this] { Leave(); }, [this] { Attend(); }) {
  if (isatty(fd_) != 1) return;
  loan_.emplace(fd_, console_->live_fd());
  Attend();
}

// Takes the terminal, or waits until it can be taken.
void Keyboard::Attend() {
  if (!loan_) return;
  if (!loan_->Take()) return BePatient();
  patience_.reset();
  if (!keys_) {
    keys_.emplace(LoopEvent::WhileReadable(fd_, [this] { OnReadable(); }));
  }
  if (!std::exchange(has_hinted_, true)) console_->Note("? shows the keys");
}

void Keyboard::BePatient() {
  keys_.reset();
  if (patience_) return;
  patience_.emplace(LoopEvent::Every(kForegroundMs, [this] { Attend(); }));
}

void Keyboard::Leave() {
  console_->Live("");
  console_->Flush();
  keys_.reset();
  if (loan_) loan_->GiveBack();
}

// A key that sends several characters, as an arrow does, is none of ours.
void Keyboard::OnReadable() {
  int waiting = 0;
  if (!is_foreground_of(fd_) || ioctl(fd_, FIONREAD, &waiting) != 0 ||
      waiting == 0) {
    return BePatient();
  }
  char keys[64];
  const ssize_t got = read(fd_, keys, sizeof(keys));
  if (got <= 0) return;
  const char* const end = std::find(keys, keys + got, kEscape);
  for (const char* key = keys; key != end; ++key) on_key_(*key);
}

}  // namespace corvane
