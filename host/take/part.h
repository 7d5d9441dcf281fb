// One file of a take: begun, watched, sealed.
#ifndef CORVANE_HOST_TAKE_PART_H_
#define CORVANE_HOST_TAKE_PART_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "audio/audio_source.h"
#include "engine/engine.h"
#include "engine/plugin_reply.h"
#include "take/capture_lock.h"
#include "take/ending.h"

namespace corvane {

struct PartSetup {
  std::string path;  // goes to the plugin as it is
  PcmFormat format;
  int64_t bit_rate = 64000;  // bit/s
  bool goes_on = false;      // behind what the file holds already
};

struct PartResult {
  std::string path;  // that it was written to
  bool started = false;
  int64_t frames = 0;                   // whole sample frames handed over
  std::optional<CaptureHolder> holder;  // why it was not begun, or given up
  bool was_removed = false;             // while it was written
  // Where the capture is if it didn't stay at its path: it was moved, or saved.
  std::string moved_to;
  // Why a removed capture could not be saved, or a moved one sealed; a clause.
  std::string loss;
  std::optional<SealedCapture> sealed;
};

// Its calls take their turn behind those before them. It must outlive the
// answers to them, and stay where it is.
class Part {
 public:
  // Borrows `engine` and `ending`, which an error ends. `lock` holds the file
  // of a part that goes on in it; that of a new one is taken at the start.
  Part(Engine* engine, Ending* ending, PartSetup setup, CaptureLock lock);
  Part(const Part&) = delete;
  Part& operator=(const Part&) = delete;

  // Has the plugin open the file. A part that is another's is cancelled.
  void Begin();
  // Until all that it has asked for is answered; whether it started, too.
  void AwaitAnswers();

  // Ends the take when no name leads to the file any more.
  void Watch();

  // Has the plugin seal the file, wherever it is by now. It waits for answers
  // only where more than one call is needed.
  void Seal();

  PartResult& result() { return result_; }

 private:
  void OnBegun(FlMethodResponse* response);
  bool Claim();
  void SealElsewhere();
  std::string SaveElsewhere();
  void Send(const char* method, FlValue* args);
  FlValue* ArgsWith(const std::string& path) const;

  Engine* const engine_;
  Ending* const ending_;
  const PartSetup setup_;
  const std::string absolute_path_;
  CaptureLock lock_;
  int unanswered_ = 0;  // calls
  PartResult result_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_PART_H_
