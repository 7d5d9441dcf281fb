// The vocabulary of an ADTS stream (ISO/IEC 14496-3, 1.A.2 and 1.6.2.1): rates,
// channel configurations, and what describes a stream. Pure; any thread.
#ifndef CORVANE_SRC_ADTS_STREAM_CONFIG_H_
#define CORVANE_SRC_ADTS_STREAM_CONFIG_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace adts {

// Sample rates in Hz by sampling_frequency_index; 13 to 15 have no entry.
constexpr std::array<int32_t, 13> kSamplingFrequencies = {
    96000, 88200, 64000, 48000, 44100, 32000, 24000,
    22050, 16000, 12000, 11025, 8000,  7350};

// What every header of a stream repeats.
struct StreamConfig {
  int32_t object_type;      // MPEG-4 audio object type; 2 is AAC LC
  int32_t frequency_index;  // 0..12, into kSamplingFrequencies
  int32_t channel_config;   // 1..6, the channel count of the default layouts

  // In Hz. `frequency_index` must be 0..12: it is not checked.
  int SampleRate() const;

  bool operator==(const StreamConfig& other) const {
    return object_type == other.object_type &&
           frequency_index == other.frequency_index &&
           channel_config == other.channel_config;
  }
};

// Returns the index of exactly `sample_rate` (Hz), or -1: no nearest match, for
// a header with a neighbouring rate would play at the wrong speed.
int FrequencyIndexOf(int sample_rate);

// True for 1 to 6. 0 would need a program config element, which is not written,
// and 7 means eight channels.
bool IsChannelConfig(int channel_config);

// Reads the leading two bytes of an AudioSpecificConfig, an encoder's
// extradata. Returns false and leaves `out` alone when it is shorter, when its
// object type is not 1..4, or when rate or channels are not in the tables
// above: neither escape value is followed.
bool StreamConfigFromAudioSpecificConfig(const uint8_t* data, size_t size,
                                         StreamConfig* out);

}  // namespace adts

#endif  // CORVANE_SRC_ADTS_STREAM_CONFIG_H_
