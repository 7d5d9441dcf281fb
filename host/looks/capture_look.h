// What a capture holds, found out before anything is done to it.
#ifndef CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_
#define CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_

#include <adts/scan.h>

#include <cstdint>
#include <optional>
#include <string>

#include "looks/first_frame.h"
#include "looks/regular_file.h"

namespace corvane {

// Why `file` is no capture, as a clause; empty when it may be one. Reads its
// first bytes alone.
std::string why_no_capture(const RegularFile& file);

// The same for a file of `bytes` bytes that was searched for a frame in vain.
std::string no_frame_in(int64_t bytes);

struct CaptureLook {
  // Why nothing can be done with it, as a clause; the rest is then not set.
  std::string error;
  bool is_missing = false;
  int64_t size = 0;
  adts::Scan scan = {};
  // Of the first whole frame; nothing when there is none.
  std::optional<PcmFormat> format;

  int64_t torn_bytes() const { return size - scan.stream_end; }
  // In AAC frames: raw data blocks of 1024 samples.
  int64_t frames() const { return scan.samples / 1024; }
};

// Reads all of the file, so it takes as long as its plugin's own look. An empty
// file is a capture that nothing was written to yet.
CaptureLook look_at_capture(const std::string& path);

// Tells that the capture is whole up to a point, and that `command` goes on
// from there; empty when it holds no whole frame.
std::string next_step(const std::string& path, const std::string& command);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_CAPTURE_LOOK_H_
