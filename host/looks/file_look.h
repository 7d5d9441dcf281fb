// What a file is, whatever it is, and what it holds if it is a capture.
#ifndef CORVANE_HOST_LOOKS_FILE_LOOK_H_
#define CORVANE_HOST_LOOKS_FILE_LOOK_H_

#include <cstdint>
#include <optional>
#include <string>

#include "looks/capture_look.h"
#include "looks/foreign_runs.h"

namespace corvane {

struct FileLook {
  // Why it is no capture, or cannot be looked at, as a clause; empty for a
  // capture.
  std::string error;
  // "ADTS" of a capture, else by how it starts, "WAV" for one; empty when that
  // tells nothing.
  std::string kind;
  std::optional<int64_t> size;  // bytes; nothing when it could not be opened
  // A WAV file whose header hides audio that is in it; `error` has the command
  // that repairs it.
  bool needs_repair = false;
  // What a search for frames found; nothing where none was made.
  std::optional<CaptureLook> capture;
  ForeignRuns foreign;

  bool is_capture() const { return error.empty(); }
};

// Reads all of the file where its first bytes don't say that it is no capture,
// and changes nothing. Opens nothing but regular files. With `is_in_use`, as
// another program writes to it, a file without a whole frame is a capture that
// has just begun.
FileLook look_at_file(const std::string& path, bool is_in_use);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_FILE_LOOK_H_
