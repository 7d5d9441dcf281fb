// An ADTS header as a look reads it.
#ifndef CORVANE_HOST_LOOKS_ADTS_HEADER_H_
#define CORVANE_HOST_LOOKS_ADTS_HEADER_H_

#include <cstdint>
#include <optional>

#include "audio/audio_source.h"

namespace corvane {

struct AdtsHeader {
  int64_t frame_length = 0;  // bytes, header included
  // 0 channels: the frame has a layout of its own.
  PcmFormat format;
  // Whether all that the plugin always writes alike is so: 34 bits, where any
  // valid header takes 15. No other data comes to it by chance.
  bool is_own = false;
};

// Reads the adts::kHeaderSize bytes at `bytes`. Nothing when adts::ScanFile
// takes them for no header.
std::optional<AdtsHeader> parse_adts_header(const uint8_t* bytes);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_ADTS_HEADER_H_
