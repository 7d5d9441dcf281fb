#include "looks/adts_header.h"

#include <adts/frame.h>
#include <adts/stream_config.h>

#include <cstddef>

namespace corvane {
namespace {

constexpr int64_t kHeaderSizeWithCrc = 9;

// MPEG-4, no CRC, none of the bits that are nobody's business, no buffer
// fullness, one block. Profile, rate, channels and length differ.
bool is_own_header(const uint8_t* bytes) {
  return bytes[1] == 0xF1 && (bytes[2] & 0x02) == 0 && (bytes[3] & 0x3C) == 0 &&
         (bytes[5] & 0x1F) == 0x1F && bytes[6] == 0xFC;
}

}  // namespace

std::optional<AdtsHeader> parse_adts_header(const uint8_t* bytes) {
  if (bytes[0] != 0xFF || (bytes[1] & 0xF6) != 0xF0) return std::nullopt;
  const size_t frequency_index = bytes[2] >> 2 & 0x0F;
  if (frequency_index >= adts::kSamplingFrequencies.size()) return std::nullopt;
  const bool has_crc = (bytes[1] & 0x01) == 0;
  const auto header_size =
      has_crc ? kHeaderSizeWithCrc : static_cast<int64_t>(adts::kHeaderSize);
  const int channel_config = (bytes[2] & 0x01) << 2 | bytes[3] >> 6;
  AdtsHeader header;
  header.frame_length = (bytes[3] & 0x03) << 11 | bytes[4] << 3 | bytes[5] >> 5;
  header.format.sample_rate = adts::kSamplingFrequencies[frequency_index];
  header.format.channels = channel_config == 7 ? 8 : channel_config;
  header.is_own = is_own_header(bytes);
  if (header.frame_length <= header_size) return std::nullopt;
  return header;
}

}  // namespace corvane
