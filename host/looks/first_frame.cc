#include "looks/first_frame.h"

#include <adts/frame.h>
#include <adts/stream_config.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace corvane {
namespace {

constexpr size_t kWindowSize = 65536;
constexpr int64_t kHeaderSizeWithCrc = 9;

struct Header {
  int64_t frame_length = 0;  // bytes, header included
  PcmFormat format;
};

std::optional<Header> header_at(const RegularFile& file, int64_t offset) {
  const std::vector<uint8_t> bytes = file.Read(offset, adts::kHeaderSize);
  if (bytes.size() < adts::kHeaderSize || bytes[0] != 0xFF ||
      (bytes[1] & 0xF6) != 0xF0) {
    return std::nullopt;
  }
  const size_t frequency_index = bytes[2] >> 2 & 0x0F;
  if (frequency_index >= adts::kSamplingFrequencies.size()) return std::nullopt;
  const bool has_crc = (bytes[1] & 0x01) == 0;
  const auto header_size =
      has_crc ? kHeaderSizeWithCrc : static_cast<int64_t>(adts::kHeaderSize);
  const int channel_config = (bytes[2] & 0x01) << 2 | bytes[3] >> 6;
  Header header;
  header.frame_length = (bytes[3] & 0x03) << 11 | bytes[4] << 3 | bytes[5] >> 5;
  header.format.sample_rate = adts::kSamplingFrequencies[frequency_index];
  header.format.channels = channel_config == 7 ? 8 : channel_config;
  if (header.frame_length <= header_size) return std::nullopt;
  return header;
}

// A frame behind foreign bytes counts only with another header, or the end of
// the file, right behind it.
std::optional<FirstFrame> confirmed_at(const RegularFile& file,
                                       int64_t offset) {
  const std::optional<Header> header = header_at(file, offset);
  if (!header) return std::nullopt;
  const int64_t end = offset + header->frame_length;
  if (end != file.size() && (end > file.size() || !header_at(file, end))) {
    return std::nullopt;
  }
  return FirstFrame{offset, header->format};
}

std::optional<FirstFrame> search_behind_start(const RegularFile& file) {
  for (int64_t start = 1; start < file.size();) {
    const std::vector<uint8_t> window = file.Read(start, kWindowSize);
    if (window.empty()) return std::nullopt;
    for (auto at = window.begin();
         (at = std::find(at, window.end(), 0xFF)) != window.end(); ++at) {
      if (auto frame = confirmed_at(file, start + (at - window.begin()))) {
        return frame;
      }
    }
    start += static_cast<int64_t>(window.size());
  }
  return std::nullopt;
}

}  // namespace

std::optional<FirstFrame> first_whole_frame(const RegularFile& file) {
  const std::optional<Header> header = header_at(file, 0);
  if (!header) return search_behind_start(file);
  // A torn frame hides all that stands behind its header.
  if (header->frame_length > file.size()) return std::nullopt;
  return FirstFrame{0, header->format};
}

}  // namespace corvane
