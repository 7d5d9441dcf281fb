// The live line of a take: how much audio, how large, how fast, and where the
// length is known, how long it will take; or that nothing comes.
#ifndef CORVANE_HOST_TAKE_PROGRESS_H_
#define CORVANE_HOST_TAKE_PROGRESS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "terminal/console.h"

namespace corvane {

struct ProgressFigures {
  bool has_begun = false;         // the first audio has come
  double silent_s = 0;            // since audio came, while it is waited for
  double audio_s = 0;             // recorded so far
  std::optional<double> total_s;  // the whole input, where it is known
  int64_t bytes = 0;              // the capture's size
  double elapsed_s = 0;           // on the clock
};

// At most `columns` - 1 columns, so that no terminal wraps it. What does not
// fit is left out, the bar first; the recorded time always stands.
std::string format_progress(const ProgressFigures& figures, int columns);

class Progress {
 public:
  // Shows the take written to `capture_path` on `console` (borrowed). Rates
  // are in Hz, lengths in sample frames.
  Progress(Console* console, std::string capture_path, int sample_rate,
           std::optional<int64_t> total_frames);
  // Takes the line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Whether there is a line to update.
  bool is_shown() const { return console_->has_live_line(); }

  // The first audio has come, and the clock runs from now on.
  void Begin();

  // The take goes on in another file.
  void SetCapturePath(std::string path) { capture_path_ = std::move(path); }
  void SetPaused(bool /*is_paused*/) {}
  // What has been read: whole sample frames.
  void Hear(const uint8_t* /*pcm*/, size_t /*size*/) {}

  // Redraws, at most ten times a second; cheap when there is nothing to draw.
  // `silent_us` is how long audio has been waited for by now.
  void Update(int64_t recorded_frames, int64_t silent_us);

 private:
  Console* const console_;
  std::string capture_path_;
  const int sample_rate_;
  const std::optional<int64_t> total_frames_;
  bool has_begun_ = false;
  int64_t start_us_;
  int64_t next_draw_us_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_PROGRESS_H_
