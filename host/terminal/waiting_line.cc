#include "terminal/waiting_line.h"

#include <algorithm>
#include <utility>

#include "terminal/wording.h"

namespace corvane {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

WaitingLine::WaitingLine(Console* console, std::string text, milliseconds delay)
    : console_(console), text_(std::move(text)) {
  if (!console_->has_live_line()) return;
  thread_ = std::thread([this, delay] { Run(delay); });
}

WaitingLine::~WaitingLine() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    over_ = true;
  }
  changed_.notify_one();
  thread_.join();
  console_->Live("");
}

void WaitingLine::Run(milliseconds delay) {
  const auto start = steady_clock::now();
  auto due = start + delay;
  std::unique_lock<std::mutex> lock(mutex_);
  while (!changed_.wait_until(lock, due, [this] { return over_; })) {
    Draw(std::chrono::duration_cast<milliseconds>(due - start));
    due += milliseconds(100);
  }
}

void WaitingLine::Draw(milliseconds gone) {
  std::string line = text_ + " " + clock_tenths(gone.count());
  // No terminal wraps what stops short of its last column.
  const int room = std::max(console_->Columns() - 1, 0);
  line.resize(std::min(line.size(), static_cast<size_t>(room)));
  console_->Live(std::move(line));
}

}  // namespace corvane
