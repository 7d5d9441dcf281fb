// What a person sees of a take while it runs: its live line, and a warning
// when the disk is about to be full.
#ifndef CORVANE_HOST_TAKE_PROGRESS_H_
#define CORVANE_HOST_TAKE_PROGRESS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "audio/level.h"
#include "take/live_line.h"
#include "terminal/console.h"

namespace corvane {

// What is known of a take beforehand.
struct TakeOutlook {
  std::string capture_path;
  PcmFormat format;
  int64_t bit_rate = 64000;             // bit/s
  std::optional<int64_t> total_frames;  // the whole input, where it is known
};

class Progress {
 public:
  // Shows the take on `console` (borrowed).
  Progress(Console* console, TakeOutlook outlook);
  // Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Whether there is a line to update.
  bool is_shown() const { return console_->has_live_line(); }

  // The first audio has come, and the clock runs from now on.
  void Begin();

  // What was read from the source, while the take is paused too: whole sample
  // frames. Nothing is done with it where no line is shown.
  void Hear(const uint8_t* pcm, size_t size);

  void SetPaused(bool is_paused);

  // The take goes on in another file. Its size is that of all of them.
  void SetCapturePath(std::string path);

  // Redraws, a few times a second at most; cheap when there is nothing to draw.
  // `waiting_us` is how long audio has been waited for by now.
  void Update(int64_t recorded_frames, int64_t waiting_us);

 private:
  void LookAtTheDisk();
  void Draw(int64_t now_us, int64_t waiting_us);
  bool IsClipping(int64_t now_us);
  std::optional<double> LeftOfInput() const;

  Console* const console_;
  const TakeOutlook outlook_;
  const Style style_;
  std::string capture_path_;
  std::string previous_path_;  // whose end may still be written
  Level level_;
  bool has_begun_ = false;
  std::optional<int64_t> paused_since_us_;
  double audio_s_ = 0;          // recorded so far
  int64_t earlier_bytes_ = 0;   // of the take, in files before both
  int64_t bytes_at_start_ = 0;  // of what was there before the take
  int64_t bytes_ = 0;           // of all of them
  std::optional<double> room_s_;
  bool has_warned_ = false;
  int64_t seen_clips_ = 0;
  int64_t clipping_until_us_ = 0;
  int64_t start_us_;
  int64_t next_draw_us_;
  int64_t next_disk_us_ = 0;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_PROGRESS_H_
