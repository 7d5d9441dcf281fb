// Levels as a terminal shows them.
#ifndef CORVANE_HOST_TERMINAL_METER_H_
#define CORVANE_HOST_TERMINAL_METER_H_

#include <cstddef>
#include <string>
#include <vector>

#include "audio/level.h"
#include "terminal/style.h"

namespace corvane {

// The narrowest bar that says something, with its brackets.
constexpr size_t kMinMeterColumns = 10;
constexpr size_t kMaxMeterColumns = 62;  // one decibel a cell

// A bar from -60 to 0 dBFS of `columns`, with a mark at the held peak.
Piece meter_bar(const ChannelLevel& level, size_t columns, const Style& style);

// The same for each channel, where `columns` hold a bar for each; else one of
// the loudest. May take fewer columns than it is given.
Piece meter_bars(const std::vector<ChannelLevel>& levels, size_t columns,
                 const Style& style);

// The held peak of the loudest channel, "-20 dB", always as wide.
Piece meter_figure(const std::vector<ChannelLevel>& levels, const Style& style);

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_METER_H_
