// A WAV file's first 44 bytes, looked at before a repair writes over them.
#ifndef CORVANE_HOST_LOOKS_WAV_LOOK_H_
#define CORVANE_HOST_LOOKS_WAV_LOOK_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_source.h"
#include "looks/regular_file.h"

namespace corvane {

constexpr size_t kWavHeaderSize = 44;

// One number of the canonical header, little-endian.
struct WavField {
  const char* name;  // in the JSON
  size_t offset;
  size_t width;  // bytes: 2 or 4
};

constexpr WavField kRiffSize = {"riffSize", 4, 4};
constexpr WavField kFormatSize = {"formatSize", 16, 4};
constexpr WavField kFormatTag = {"formatTag", 20, 2};
constexpr WavField kChannels = {"channels", 22, 2};
constexpr WavField kSampleRate = {"sampleRate", 24, 4};
constexpr WavField kByteRate = {"byteRate", 28, 4};
constexpr WavField kBlockAlign = {"blockAlign", 32, 2};
constexpr WavField kBitsPerSample = {"bitsPerSample", 34, 2};
constexpr WavField kDataSize = {"dataSize", 40, 4};
constexpr std::array<WavField, 9> kWavFields = {
    kRiffSize, kFormatSize, kFormatTag,     kChannels, kSampleRate,
    kByteRate, kBlockAlign, kBitsPerSample, kDataSize};

using WavStart = std::vector<uint8_t>;  // the first 44 bytes, or fewer

// The field's value; 0 where the start is too short for it.
uint32_t value_of(const WavField& field, const WavStart& start);

struct WavObjection {
  std::string reason;  // a clause; empty when there is none
  // Whether audio behind another header is what a repair would damage, so that
  // a program that reads the file can still save it.
  bool has_audio = false;
};

// Why a canonical header of 16-bit PCM would damage the file or be wrong for
// it. None to a header that was never written, all zeros.
WavObjection objection_to_repair(const RegularFile& file);

// How many bytes there are from `position` on, where they are whole chunks to
// the end of the file; 0 where they are anything else.
int64_t chunk_bytes_from(int64_t position, const RegularFile& file);

// Rate and channels as the header has them, where they can be believed.
std::optional<PcmFormat> format_in(const WavStart& start);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_WAV_LOOK_H_
