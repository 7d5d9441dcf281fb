#include "adts/frame.h"

#include <algorithm>

namespace adts {
namespace {

// `length` is aac_frame_length, the header included.
void WriteHeader(const StreamConfig& config, size_t length, uint8_t* header) {
  const auto profile = static_cast<unsigned>(config.object_type + 3) % 4;
  const auto frequency = static_cast<unsigned>(config.frequency_index);
  const auto channels = static_cast<unsigned>(config.channel_config);
  const auto byte = [](size_t bits) { return static_cast<uint8_t>(bits); };

  header[0] = 0xFF;  // syncword
  header[1] = 0xF1;  // syncword, MPEG-4, layer 0, no CRC
  header[2] = byte(profile << 6 | frequency << 2 | channels >> 2);
  header[3] = byte(channels % 4 << 6 | length >> 11);
  header[4] = byte(length >> 3);
  header[5] = byte((length % 8) << 5 | 0x1F);
  header[6] = 0xFC;  // buffer fullness 0x7FF ends here; one raw data block
}

}  // namespace

bool Frame(const StreamConfig& config, const uint8_t* payload, size_t size,
           std::vector<uint8_t>* out) {
  if (size > kMaxFrameSize - kHeaderSize) {
    return false;
  }
  out->resize(size + kHeaderSize);
  WriteHeader(config, out->size(), out->data());
  std::copy_n(payload, size, out->data() + kHeaderSize);
  return true;
}

}  // namespace adts
