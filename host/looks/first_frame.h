// The first whole frame of a capture, as the plugin would find it.
#ifndef CORVANE_HOST_LOOKS_FIRST_FRAME_H_
#define CORVANE_HOST_LOOKS_FIRST_FRAME_H_

#include <cstdint>
#include <optional>

#include "audio/audio_source.h"
#include "looks/regular_file.h"

namespace corvane {

struct FirstFrame {
  int64_t offset = 0;  // bytes from the start of the file
  // What its header names. 0 channels: the frame has a layout of its own.
  PcmFormat format;
};

// Nothing when adts::ScanFile finds no frame either.
std::optional<FirstFrame> first_whole_frame(const RegularFile& file);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_FIRST_FRAME_H_
