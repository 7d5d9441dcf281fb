#include "adts/stream_config.h"

#include <algorithm>

namespace adts {

int StreamConfig::SampleRate() const {
  return kSamplingFrequencies[static_cast<size_t>(frequency_index)];
}

int FrequencyIndexOf(int sample_rate) {
  const auto* found = std::find(kSamplingFrequencies.begin(),
                                kSamplingFrequencies.end(), sample_rate);
  return found == kSamplingFrequencies.end()
             ? -1
             : static_cast<int>(found - kSamplingFrequencies.begin());
}

bool IsChannelConfig(int channel_config) {
  return channel_config >= 1 && channel_config <= 6;
}

bool StreamConfigFromAudioSpecificConfig(const uint8_t* data, size_t size,
                                         StreamConfig* out) {
  if (data == nullptr || size < 2) {
    return false;
  }
  // 5 bits of object type, 4 of frequency index, 4 of channel configuration.
  const StreamConfig parsed = {
      data[0] >> 3, (data[0] & 0x07) << 1 | data[1] >> 7, data[1] >> 3 & 0x0F};
  if (parsed.object_type < 1 || parsed.object_type > 4 ||
      parsed.frequency_index >= static_cast<int>(kSamplingFrequencies.size()) ||
      !IsChannelConfig(parsed.channel_config)) {
    return false;
  }
  *out = parsed;
  return true;
}

}  // namespace adts
