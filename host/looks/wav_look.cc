#include "looks/wav_look.h"

#include <algorithm>
#include <string_view>

#include "audio/file_kind.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr size_t kFirstChunk = 12;  // behind "RIFF", its size, and "WAVE"
constexpr size_t kDataChunk = 36;   // where audio's chunk has to stand
constexpr size_t kChunkHeaderSize = 8;
constexpr uint32_t kPcm = 1;
constexpr uint32_t kExtensible = 0xFFFE;

// What recordings have; beyond it a number is more likely garbage.
constexpr uint32_t kLowestRate = 1000;
constexpr uint32_t kHighestRate = 768000;
constexpr uint32_t kMostChannels = 64;

std::string_view id_at(const WavStart& start, size_t offset) {
  return std::string_view(reinterpret_cast<const char*>(start.data()) + offset,
                          4);
}

bool is_unwritten(const WavStart& start, size_t from, size_t to) {
  return std::all_of(start.begin() + static_cast<ptrdiff_t>(from),
                     start.begin() + static_cast<ptrdiff_t>(to),
                     [](uint8_t byte) { return byte == 0; });
}

std::string long_header(const std::string& what) {
  return "its header is longer than 44 bytes (" + what +
         "), and the rest of it would become audio";
}

// The chunk's name where it has one that can be shown.
std::string chunk_named(std::string_view id) {
  const bool is_name = std::all_of(id.begin(), id.end(),
                                   [](char c) { return c >= ' ' && c <= '~'; });
  return is_name ? "a chunk \"" + std::string(id) + "\"" : "another chunk";
}

std::string objection_to_format(const WavStart& start) {
  const uint32_t tag = value_of(kFormatTag, start);
  const uint32_t bits = value_of(kBitsPerSample, start);
  if (tag == kExtensible) return long_header("WAVE_FORMAT_EXTENSIBLE");
  if (tag != kPcm) {
    return "its audio is not PCM (format " + std::to_string(tag) + ")";
  }
  if (bits != 16) {
    return "its samples have " + std::to_string(bits) + " bits, not 16";
  }
  if (value_of(kFormatSize, start) != 16) {
    return long_header("a format of " +
                       counted(value_of(kFormatSize, start), "byte"));
  }
  if (id_at(start, kDataChunk) != "data" &&
      !is_unwritten(start, kDataChunk, kWavHeaderSize)) {
    return long_header(chunk_named(id_at(start, kDataChunk)) +
                       " before the audio");
  }
  return "";
}

// The bytes behind the audio that its header promises, when they are whole
// chunks to the end of the file: then the header is right, not stale.
int64_t trailing_chunk_bytes(const RegularFile& file, const WavStart& start) {
  const int64_t data_size = value_of(kDataSize, start);
  return chunk_bytes_from(int64_t{kWavHeaderSize} + data_size + data_size % 2,
                          file);
}

WavObjection objection_to_start(const WavStart& start) {
  const std::string kind = kind_of(start);
  if (!kind.empty() && kind != kKindWav) return {"it starts like " + kind};
  if (start.size() < kWavHeaderSize) {
    return {"it is shorter than a header, so there is no audio in it"};
  }
  const bool is_new = is_unwritten(start, kFirstChunk, kWavHeaderSize);
  if (kind.empty()) {
    if (is_new && is_unwritten(start, 0, kFirstChunk)) return {};
    return {"it does not start like WAV"};
  }
  if (is_new) return {};
  if (id_at(start, kFirstChunk) != "fmt ") {
    return {long_header(chunk_named(id_at(start, kFirstChunk)) +
                        " before the format"),
            true};
  }
  return {objection_to_format(start), true};
}

}  // namespace

uint32_t value_of(const WavField& field, const WavStart& start) {
  if (start.size() < field.offset + field.width) return 0;
  uint32_t value = 0;
  for (size_t i = field.width; i > 0; --i) {
    value = value << 8 | start[field.offset + i - 1];
  }
  return value;
}

int64_t chunk_bytes_from(int64_t position, const RegularFile& file) {
  const int64_t begin = position;
  while (position + static_cast<int64_t>(kChunkHeaderSize) <= file.size()) {
    const std::vector<uint8_t> chunk = file.Read(position, kChunkHeaderSize);
    if (chunk.size() < kChunkHeaderSize ||
        chunk_named(id_at(chunk, 0)) == "another chunk") {
      return 0;
    }
    const int64_t size = value_of({"size", 4, 4}, chunk);
    position += static_cast<int64_t>(kChunkHeaderSize) + size + size % 2;
  }
  return position == file.size() ? position - begin : 0;
}

WavObjection objection_to_repair(const RegularFile& file) {
  const WavStart start = file.Read(0, kWavHeaderSize);
  WavObjection objection = objection_to_start(start);
  if (!objection.reason.empty() ||
      is_unwritten(start, kDataChunk, kWavHeaderSize)) {
    return objection;
  }
  const int64_t trailing = trailing_chunk_bytes(file, start);
  if (trailing == 0) return {};
  return {"its header is right, and the " + counted(trailing, "byte") +
          " of other chunks behind the audio would become audio"};
}

std::optional<PcmFormat> format_in(const WavStart& start) {
  const uint32_t rate = value_of(kSampleRate, start);
  const uint32_t channels = value_of(kChannels, start);
  if (rate < kLowestRate || rate > kHighestRate || channels < 1 ||
      channels > kMostChannels ||
      value_of(kBlockAlign, start) != channels * 2) {
    return std::nullopt;
  }
  return PcmFormat{static_cast<int>(rate), static_cast<int>(channels)};
}

}  // namespace corvane
