// What a capture holds, found out before anything is done to it.
#ifndef CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_
#define CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_

#include <adts/scan.h>

#include <cstdint>
#include <optional>
#include <string>

#include "looks/first_frame.h"
#include "looks/regular_file.h"
#include "terminal/console.h"

namespace corvane {

// What the first bytes of `file` have against its being a capture, as a clause;
// empty when they have nothing.
std::string objection_by_start(const RegularFile& file);

// The same for a file in which a frame was found: whether it is there by more
// than chance. Reads all of the file where its first frames don't decide.
std::string objection_by_evidence(const RegularFile& file);

// Returns whether the file at `path` is taken for a capture: without an
// objection, or by `force`. Says on the console that an objection keeps it from
// that, or that it is overridden.
bool is_taken(const std::string& path, const std::string& objection, bool force,
              Console* console);

// Why `file` cannot be a capture by itself, as a clause with the way out; empty
// when it has something in it that can be read.
std::string objection_to_file(const RegularFile& file);

// Why a file that was searched for a frame in vain is none, as a clause. Reads
// all of a file of zeros.
std::string no_frame_in(const RegularFile& file);

// The same for a command that would have changed it.
std::string left_without_frame(const RegularFile& file);

struct CaptureLook {
  // Why nothing can be done with it, as a clause; the rest is then not set.
  std::string error;
  // Why it is hardly a capture, as a clause, for whoever knows better. With
  // it the rest is set only if the look was to be forced.
  std::string objection;
  bool is_missing = false;
  int64_t size = 0;  // bytes, as the scan began
  adts::Scan scan = {};
  // Of the first whole frame; nothing when there is none.
  std::optional<PcmFormat> format;

  int64_t torn_bytes() const { return size - scan.stream_end; }
  // In AAC frames: raw data blocks of 1024 samples.
  int64_t frames() const { return scan.samples / 1024; }
};

// Reads all of the file, so it takes as long as its plugin's own look. An empty
// file is a capture that nothing was written to yet. With `force` it goes on
// behind an objection.
CaptureLook look_at_capture(const std::string& path, bool force);
CaptureLook look_at_capture(const RegularFile& file, bool force);

// Tells that the capture is whole up to a point, and that `command` goes on
// from there; empty when it holds no whole frame.
std::string next_step(const std::string& path, const std::string& command);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_
