#include "terminal/patient_writer.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace corvane {
namespace {

constexpr size_t kMostPending = 65536;  // bytes

void write_all(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(fd, text.data(), text.size());
    if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    if (written >= 0 || errno == EINTR) continue;
    if (errno != EAGAIN) return;
    pollfd entry = {fd, POLLOUT, 0};
    poll(&entry, 1, -1);
  }
}

}  // namespace

struct PatientWriter::State {
  explicit State(int fd_to_write) : fd(fd_to_write) {}

  bool is_idle() const { return pending.empty() && !is_writing; }

  void Run() {
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
      changed.wait(lock, [this] { return over || !pending.empty(); });
      if (pending.empty()) return;
      const std::string text = std::exchange(pending, {});
      is_writing = true;
      lock.unlock();
      write_all(fd, text);
      lock.lock();
      is_writing = false;
      changed.notify_all();
    }
  }

  const int fd;
  mutable std::mutex mutex;  // guards all below
  std::condition_variable changed;
  std::string pending;
  bool is_writing = false;
  bool over = false;
};

// Detached, for nothing ends a write that blocks.
PatientWriter::PatientWriter(int fd) : state_(std::make_shared<State>(fd)) {
  std::thread([state = state_] { state->Run(); }).detach();
}

PatientWriter::~PatientWriter() {
  Flush(std::chrono::seconds(1));
  const std::lock_guard<std::mutex> lock(state_->mutex);
  state_->over = true;
  state_->changed.notify_all();
}

void PatientWriter::Write(std::string_view text) {
  const std::lock_guard<std::mutex> lock(state_->mutex);
  if (state_->pending.size() + text.size() > kMostPending) return;
  state_->pending += text;
  state_->changed.notify_all();
}

bool PatientWriter::is_behind() const {
  const std::lock_guard<std::mutex> lock(state_->mutex);
  return !state_->is_idle();
}

void PatientWriter::Flush(std::chrono::milliseconds patience) {
  std::unique_lock<std::mutex> lock(state_->mutex);
  state_->changed.wait_for(lock, patience,
                           [this] { return state_->is_idle(); });
}

}  // namespace corvane
