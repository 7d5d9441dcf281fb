// The live line of a take at any width.
#ifndef CORVANE_HOST_TAKE_LIVE_LINE_H_
#define CORVANE_HOST_TAKE_LIVE_LINE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audio/level.h"
#include "terminal/style.h"

namespace corvane {

// From here on down a disk is as good as full.
constexpr double kLittleRoomS = 600;

struct LiveFigures {
  bool has_begun = false;         // the first audio has come
  double waiting_s = 0;           // since audio came, while it is waited for
  double audio_s = 0;             // recorded so far
  std::optional<double> total_s;  // the whole input, where it is known
  double elapsed_s = 0;           // on the clock
  int64_t bytes = 0;              // the capture's size
  std::optional<double> room_s;   // of audio, on the capture's disk

  std::vector<ChannelLevel> levels;  // empty: unknown
  double quiet_s = 0;                // as Level has them
  double still_s = 0;
  bool is_clipping = false;
  bool is_paused = false;
};

// At most `columns` - 1 columns, so that no terminal wraps it. What does not
// fit is left out whole: the recorded time goes last, then a word that holds
// (as PAUSED), then the level.
std::string format_live_line(const LiveFigures& figures, int columns,
                             const Style& style);

// For how long there is room, roughly: "9:59", "43 min", "41 h", "12 days".
std::string rough_time(double seconds);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_LIVE_LINE_H_
