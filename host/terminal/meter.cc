#include "terminal/meter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace corvane {
namespace {

constexpr double kFloorDb = -60;
constexpr double kLoudDb = -12;
constexpr double kTooLoudDb = -3;

constexpr const char* kEighths[] = {"",       "\u258f", "\u258e",
                                    "\u258d", "\u258c", "\u258b",
                                    "\u258a", "\u2589", "\u2588"};
constexpr size_t kFull = 8;

Colour colour_of(double db) {
  if (db >= kTooLoudDb) return Colour::kRed;
  return db >= kLoudDb ? Colour::kYellow : Colour::kGreen;
}

// How far a level reaches into a bar of so many steps.
size_t reach(double db, size_t steps) {
  const double share = std::clamp(1 - db / kFloorDb, 0.0, 1.0);
  return static_cast<size_t>(std::lround(share * static_cast<double>(steps)));
}

std::string repeated(const char* text, size_t times) {
  std::string result;
  for (size_t i = 0; i < times; ++i) result += text;
  return result;
}

struct Fill {
  std::string text;
  size_t cells;
};

Fill fill_of(double db, size_t cells, const Style& style) {
  if (!style.has_blocks) {
    const size_t filled = reach(db, cells);
    return {std::string(filled, '='), filled};
  }
  const size_t eighths = reach(db, cells * kFull);
  const size_t rest = eighths % kFull;
  return {repeated(kEighths[kFull], eighths / kFull) + kEighths[rest],
          eighths / kFull + (rest > 0 ? 1 : 0)};
}

ChannelLevel loudest(const std::vector<ChannelLevel>& levels) {
  ChannelLevel result;
  for (const ChannelLevel& level : levels) {
    result.peak = std::max(result.peak, level.peak);
    result.held = std::max(result.held, level.held);
  }
  return result;
}

std::string label_of(size_t channel, size_t channels) {
  if (channels == 2) return channel == 0 ? "L" : "R";
  return std::to_string(channel + 1);
}

}  // namespace

Piece meter_bar(const ChannelLevel& level, size_t columns, const Style& style) {
  const size_t cells = columns - 2;
  const double db = dbfs(level.peak);
  const Fill fill = fill_of(db, cells, style);
  std::string text = "[" + coloured(fill.text, style, colour_of(db));
  const double held_db = dbfs(level.held);
  const size_t mark = std::max<size_t>(reach(held_db, cells), 1) - 1;
  if (held_db > kFloorDb && mark >= fill.cells) {
    text +=
        std::string(mark - fill.cells, ' ') +
        coloured(style.has_blocks ? "\u2595" : "|", style, colour_of(held_db)) +
        std::string(cells - mark - 1, ' ');
  } else {
    text += std::string(cells - fill.cells, ' ');
  }
  Piece bar;
  bar.text = text + "]";
  bar.columns = columns;
  return bar;
}

Piece meter_bars(const std::vector<ChannelLevel>& levels, size_t columns,
                 const Style& style) {
  const size_t count = levels.size();
  const size_t gaps = std::max<size_t>(count, 1) - 1;
  const size_t each =
      std::min((columns - gaps) / std::max<size_t>(count, 1), kMaxMeterColumns);
  if (count < 2 || columns < gaps || each < kMinMeterColumns + 1) {
    return meter_bar(loudest(levels), std::min(columns, kMaxMeterColumns),
                     style);
  }
  Piece bars;
  for (size_t i = 0; i < count; ++i) {
    const Piece bar = meter_bar(levels[i], each - 1, style);
    bars.text += (i > 0 ? " " : "") + label_of(i, count) + bar.text;
  }
  bars.columns = each * count + gaps;
  return bars;
}

Piece meter_figure(const std::vector<ChannelLevel>& levels,
                   const Style& style) {
  const double db = dbfs(loudest(levels).held);
  char text[16];
  if (std::isinf(db)) return Piece("-inf dB", style);
  std::snprintf(text, sizeof(text), "%4ld dB", std::lround(db));
  return Piece(text, style, db >= kLoudDb ? colour_of(db) : Colour::kNone);
}

}  // namespace corvane
