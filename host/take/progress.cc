#include "take/progress.h"

#include <glib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kDrawIntervalUs = 100'000;
constexpr size_t kMinBarWidth = 5;   // "[===]"
constexpr size_t kMaxBarWidth = 42;  // longer ones only part the figures
constexpr int kWideColumns = 60;     // from here on figures stand further apart

template <typename... Args>
std::string format(const char* pattern, Args... args) {
  char text[64];
  std::snprintf(text, sizeof(text), pattern, args...);
  return text;
}

// 0:07, 12:34, 1:02:03
std::string clock_time(double seconds) {
  const auto whole = static_cast<long long>(seconds);
  const long long hours = whole / 3600;
  const long long minutes = whole / 60 % 60;
  if (hours == 0) return format("%lld:%02lld", minutes, whole % 60);
  return format("%lld:%02lld:%02lld", hours, minutes, whole % 60);
}

std::string bar(double share, size_t width) {
  const size_t inner = width - 2;
  const auto filled = static_cast<size_t>(static_cast<double>(inner) * share);
  return "[" + std::string(filled, '=') + std::string(inner - filled, ' ') +
         "]";
}

// Live sound comes every few milliseconds.
constexpr double kStallS = 2;

std::string stall(double silent_s) {
  return "no audio for " + clock_time(silent_s);
}

// The figures in the order in which a narrow terminal gives them up, the last
// one first.
std::vector<std::string> pieces_of(const ProgressFigures& figures,
                                   double speed) {
  std::vector<std::string> pieces = {clock_time(figures.audio_s)};
  if (figures.silent_s >= kStallS) pieces.push_back(stall(figures.silent_s));
  pieces.push_back(file_size(figures.bytes));
  pieces.push_back(format("%.1fx", speed));
  if (figures.total_s && speed > 0) {
    const double left_s =
        std::max(0.0, *figures.total_s - figures.audio_s) / speed;
    pieces.push_back(clock_time(left_s) + " left");
  }
  return pieces;
}

}  // namespace

std::string format_progress(const ProgressFigures& figures, int columns) {
  const auto room = static_cast<size_t>(std::max(columns - 1, 0));
  if (!figures.has_begun) {
    const std::string line = figures.silent_s < kStallS
                                 ? "waiting for audio"
                                 : stall(figures.silent_s);
    return line.substr(0, room);
  }
  const double speed =
      figures.elapsed_s > 0 ? figures.audio_s / figures.elapsed_s : 0;
  const std::string gap = columns < kWideColumns ? " " : "  ";
  std::string line;
  for (const std::string& piece : pieces_of(figures, speed)) {
    const std::string longer = line.empty() ? piece : line + gap + piece;
    if (longer.size() > room && !line.empty()) return line;
    line = longer;
  }
  const size_t used = line.size() + gap.size();
  const double total_s = figures.total_s.value_or(0);
  if (total_s <= 0 || used + kMinBarWidth > room) return line;
  const double share = std::min(1.0, figures.audio_s / total_s);
  return bar(share, std::min(room - used, kMaxBarWidth)) + gap + line;
}

Progress::Progress(Console* console, std::string capture_path, int sample_rate,
                   std::optional<int64_t> total_frames)
    : console_(console),
      capture_path_(std::move(capture_path)),
      sample_rate_(sample_rate),
      total_frames_(total_frames),
      start_us_(g_get_monotonic_time()),
      next_draw_us_(start_us_ + kDrawIntervalUs) {}

Progress::~Progress() { console_->Live(""); }

void Progress::Begin() {
  has_begun_ = true;
  start_us_ = g_get_monotonic_time();
}

void Progress::Update(int64_t recorded_frames, int64_t silent_us) {
  if (!is_shown()) return;
  const int64_t now_us = g_get_monotonic_time();
  if (now_us < next_draw_us_) return;
  next_draw_us_ = now_us + kDrawIntervalUs;

  ProgressFigures figures;
  figures.has_begun = has_begun_;
  figures.silent_s = static_cast<double>(silent_us) / 1e6;
  const double rate = sample_rate_;
  figures.audio_s = static_cast<double>(recorded_frames) / rate;
  if (total_frames_) {
    figures.total_s = static_cast<double>(*total_frames_) / rate;
  }
  struct stat file = {};
  if (stat(capture_path_.c_str(), &file) == 0) figures.bytes = file.st_size;
  figures.elapsed_s = static_cast<double>(now_us - start_us_) / 1e6;
  console_->Live(format_progress(figures, console_->Columns()));
}

}  // namespace corvane
