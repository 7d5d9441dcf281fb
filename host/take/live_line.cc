#include "take/live_line.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "terminal/meter.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr double kStallS = 2;  // live sound comes every few milliseconds
constexpr double kQuietS = 5;
constexpr int kWideColumns = 60;  // from here on pieces stand further apart
constexpr size_t kGoodMeterColumns = 20;
// The shortest word comes and goes; the meter keeps its width meanwhile.
constexpr size_t kWordColumns = 8;
constexpr size_t kMinBarColumns = 12;
constexpr size_t kMaxBarColumns = 42;

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

// What holds at the moment, and since when: that goes first.
struct Word {
  std::string text;
  std::string since;
  Colour colour;
};

std::vector<Word> words_of(const LiveFigures& figures) {
  std::vector<Word> words;
  if (figures.is_paused) words.push_back({"PAUSED", "", Colour::kYellow});
  if (figures.is_clipping) words.push_back({"CLIPPING", "", Colour::kRed});
  if (figures.waiting_s >= kStallS) {
    words.push_back(
        {"no audio", " for " + clock_time(figures.waiting_s), Colour::kYellow});
  } else if (figures.still_s > kQuietS) {
    words.push_back(
        {"NO SIGNAL", " " + clock_time(figures.still_s), Colour::kRed});
  } else if (figures.quiet_s > kQuietS) {
    words.push_back(
        {"SILENCE", " " + clock_time(figures.quiet_s), Colour::kYellow});
  }
  return words;
}

std::string bar(double share, size_t columns) {
  const size_t inner = columns - 2;
  const auto filled = static_cast<size_t>(static_cast<double>(inner) * share);
  return "[" + std::string(filled, '=') + std::string(inner - filled, ' ') +
         "]";
}

// A line that is filled by what matters most first, and read from left to
// right.
class Layout {
 public:
  Layout(const LiveFigures& figures, int columns, const Style& style)
      : figures_(figures),
        style_(style),
        gap_(columns < kWideColumns ? 1 : 2),
        left_(static_cast<size_t>(std::max(columns - 1, 0))) {}

  std::string Text() {
    if (!Take(&time_, Piece(clock_time(figures_.audio_s), style_))) return "";
    TakeLevelAndWords();
    TakeFigures();
    ShareOutTheRest();
    std::string line;
    Join(bar_, &line);
    Join(time_, &line);
    Join(meter_, &line);
    Join(level_, &line);
    for (const Piece& piece : behind_) Join(piece, &line);
    return line;
  }

 private:
  size_t gap() const { return has_any_ ? gap_ : 0; }
  bool has_room_for(size_t columns) const { return columns + gap() <= left_; }

  bool Take(Piece* place, Piece piece) {
    if (!has_room_for(piece.columns)) return false;
    left_ -= piece.columns + gap();
    has_any_ = true;
    *place = std::move(piece);
    return true;
  }
  bool TakeBehind(Piece piece) {
    Piece taken;
    if (!Take(&taken, std::move(piece))) return false;
    behind_.push_back(std::move(taken));
    return true;
  }

  void TakeWord(const Word& word) {
    const size_t before = left_;
    if (!TakeBehind(Piece(word.text + word.since, style_, word.colour))) {
      TakeBehind(Piece(word.text, style_, word.colour));
    }
    word_columns_ += before - left_;
  }

  void TakeLevelAndWords() {
    const std::vector<Word> words = words_of(figures_);
    if (!words.empty()) TakeWord(words.front());
    if (!figures_.levels.empty() &&
        Take(&level_, meter_figure(figures_.levels, style_))) {
      Reserve();
    }
    for (size_t i = 1; i < words.size(); ++i) TakeWord(words[i]);
  }

  // The meter's place is kept free; how much it gets is seen in the end.
  void Reserve() {
    for (const size_t columns : {kGoodMeterColumns, kMinMeterColumns}) {
      if (!has_room_for(columns)) continue;
      left_ -= columns + gap_;
      meter_columns_ = columns;
      return;
    }
  }

  // In the order in which a narrow terminal gives them up, the last one first.
  void TakeFigures() {
    std::vector<Piece> pieces = {Piece(file_size(figures_.bytes), style_)};
    if (figures_.total_s && figures_.elapsed_s > 0 && figures_.audio_s > 0) {
      const double speed = figures_.audio_s / figures_.elapsed_s;
      const double left_s =
          std::max(0.0, *figures_.total_s - figures_.audio_s) / speed;
      pieces.emplace_back(clock_time(left_s) + " left", style_);
      pieces.emplace_back(format("%.1fx", speed), style_);
    }
    if (figures_.room_s) {
      pieces.emplace_back(
          "room for " + rough_time(*figures_.room_s), style_,
          *figures_.room_s < kLittleRoomS ? Colour::kRed : Colour::kNone);
    }
    for (Piece& piece : pieces) {
      if (!TakeBehind(std::move(piece))) return;
    }
  }

  void ShareOutTheRest() {
    const size_t word = kWordColumns + gap_;
    left_ -= std::min(left_, word - std::min(word, word_columns_));
    const double total_s = figures_.total_s.value_or(0);
    if (total_s > 0 && has_room_for(kMinBarColumns)) {
      const size_t columns =
          std::clamp((left_ - gap()) / 2, kMinBarColumns, kMaxBarColumns);
      const double share = std::min(1.0, figures_.audio_s / total_s);
      Take(&bar_, Piece(bar(share, columns), style_));
    }
    if (meter_columns_ == 0) return;
    meter_ = meter_bars(figures_.levels, meter_columns_ + left_, style_);
  }

  void Join(const Piece& piece, std::string* line) const {
    if (piece.columns == 0) return;
    if (!line->empty()) *line += std::string(gap_, ' ');
    *line += piece.text;
  }

  const LiveFigures& figures_;
  const Style& style_;
  const size_t gap_;
  size_t left_;  // columns
  bool has_any_ = false;
  size_t word_columns_ = 0;  // with their gaps
  size_t meter_columns_ = 0;
  Piece bar_;
  Piece time_;
  Piece meter_;
  Piece level_;
  std::vector<Piece> behind_;
};

}  // namespace

std::string format_live_line(const LiveFigures& figures, int columns,
                             const Style& style) {
  if (figures.has_begun) return Layout(figures, columns, style).Text();
  const std::string line =
      figures.waiting_s < kStallS
          ? "waiting for audio"
          : "no audio for " + clock_time(figures.waiting_s);
  return line.substr(0, static_cast<size_t>(std::max(columns - 1, 0)));
}

std::string rough_time(double seconds) {
  constexpr long long kHour = 3600;
  constexpr long long kDay = 24 * kHour;
  if (seconds < kLittleRoomS) return clock_time(seconds);
  const auto whole = static_cast<long long>(seconds);
  if (whole < kHour) return format("%lld min", whole / 60);
  if (whole < 2 * kDay) return format("%lld h", whole / kHour);
  return format("%lld days", whole / kDay);
}

}  // namespace corvane
