#include "take/progress.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include "take/room.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kDrawIntervalUs = 180'000;
// A file system that hangs is not asked more often than it must be.
constexpr int64_t kDiskIntervalUs = 2'000'000;
constexpr int64_t kClippingUs = 1'500'000;
// From here on the take's own rate counts, and no longer what was asked for.
constexpr double kKnownRateS = 10;

}  // namespace

Progress::Progress(Console* console, TakeOutlook outlook)
    : console_(console),
      outlook_(std::move(outlook)),
      style_(style_of_environment()),
      capture_path_(outlook_.capture_path),
      level_(outlook_.format),
      start_us_(g_get_monotonic_time()),
      next_draw_us_(start_us_ + kDrawIntervalUs) {}

Progress::~Progress() { console_->Live(""); }

void Progress::Begin() {
  has_begun_ = true;
  start_us_ = g_get_monotonic_time();
  bytes_at_start_ = size_at(capture_path_);
}

void Progress::Hear(const uint8_t* pcm, size_t size) {
  if (is_shown()) level_.Hear(pcm, size);
}

// Paused time says nothing of the speed.
void Progress::SetPaused(bool is_paused) {
  const int64_t now_us = g_get_monotonic_time();
  if (paused_since_us_) start_us_ += now_us - *paused_since_us_;
  paused_since_us_.reset();
  if (is_paused) paused_since_us_ = now_us;
}

void Progress::SetCapturePath(std::string path) {
  if (has_begun_) {
    earlier_bytes_ += size_at(previous_path_);
    previous_path_ = std::move(capture_path_);
  }
  capture_path_ = std::move(path);
}

void Progress::Update(int64_t recorded_frames, int64_t waiting_us) {
  const int64_t now_us = g_get_monotonic_time();
  if (now_us < next_draw_us_) return;
  next_draw_us_ = now_us + kDrawIntervalUs;
  audio_s_ = static_cast<double>(recorded_frames) /
             std::max(outlook_.format.sample_rate, 1);
  const bool looks_at_disk = has_begun_ && now_us >= next_disk_us_;
  if (!is_shown() && !looks_at_disk) return;
  bytes_ = earlier_bytes_ + size_at(previous_path_) + size_at(capture_path_);
  if (looks_at_disk) {
    next_disk_us_ = now_us + kDiskIntervalUs;
    LookAtTheDisk();
  }
  if (is_shown()) Draw(now_us, waiting_us);
}

void Progress::LookAtTheDisk() {
  const auto free_bytes = free_bytes_at(capture_path_);
  if (!free_bytes) return;
  double bytes_per_s = static_cast<double>(outlook_.bit_rate) / 8;
  if (audio_s_ >= kKnownRateS) {
    bytes_per_s = static_cast<double>(bytes_ - bytes_at_start_) / audio_s_;
  }
  room_s_ = static_cast<double>(*free_bytes) / std::max(bytes_per_s, 1.0);
  const auto left_s = LeftOfInput();
  const bool is_enough =
      *room_s_ >= kLittleRoomS || (left_s && *left_s < *room_s_);
  if (is_enough || has_warned_) return;
  has_warned_ = true;
  console_->Complain(capture_path_ + ": warning: the disk has room for " +
                     rough_time(*room_s_) + " more; free some, or the take " +
                     "ends there");
}

void Progress::Draw(int64_t now_us, int64_t waiting_us) {
  LiveFigures figures;
  figures.has_begun = has_begun_;
  figures.waiting_s = static_cast<double>(waiting_us) / 1e6;
  figures.audio_s = audio_s_;
  if (outlook_.total_frames) figures.total_s = audio_s_ + *LeftOfInput();
  figures.elapsed_s =
      static_cast<double>(paused_since_us_.value_or(now_us) - start_us_) / 1e6;
  figures.bytes = bytes_;
  figures.room_s = room_s_;
  figures.levels = level_.channels();
  figures.quiet_s = level_.quiet_s();
  figures.still_s = level_.still_s();
  figures.is_clipping = IsClipping(now_us);
  figures.is_paused = paused_since_us_.has_value();
  console_->Live(format_live_line(figures, console_->Columns(), style_));
}

// Held for as long as it takes to read it.
bool Progress::IsClipping(int64_t now_us) {
  if (level_.clips() != std::exchange(seen_clips_, level_.clips())) {
    clipping_until_us_ = now_us + kClippingUs;
  }
  return now_us < clipping_until_us_;
}

std::optional<double> Progress::LeftOfInput() const {
  if (!outlook_.total_frames) return std::nullopt;
  const double total_s = static_cast<double>(*outlook_.total_frames) /
                         std::max(outlook_.format.sample_rate, 1);
  return std::max(0.0, total_s - audio_s_);
}

}  // namespace corvane
