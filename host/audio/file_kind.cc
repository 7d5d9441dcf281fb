#include "audio/file_kind.h"

#include <string_view>

namespace corvane {
namespace {

struct Mark {
  size_t offset;
  std::string_view bytes;
  const char* kind;
};

// The first that fits counts.
constexpr Mark kMarks[] = {
    {0, "fLaC", "FLAC"},
    {0, "OggS", "Ogg"},
    {0, "FORM", "AIFF"},
    {0, "RF64", "RF64 (WAV of more than 4 GiB)"},
    {0, "BW64", "BW64 (WAV of more than 4 GiB)"},
    {0, "riff", "Wave64"},
    {0, "RIFX", "big-endian WAV"},
    {0, "caff", "CAF"},
    {0, ".snd", "AU"},
    {0, "ID3", kKindTagged},
    {0, "\x1A\x45\xDF\xA3", "Matroska"},
    {0, "%PDF", "PDF"},
    {0, "PK\x03\x04", "ZIP"},
    {4, "ftyp", "MP4"},
    {4, "moov", "MP4"},
    {4, "mdat", "MP4"},
};

// MPEG audio and ADTS share their first eleven bits; the layer parts them.
// Layer I is in no use, but UTF-16 text starts like it.
const char* mpeg_kind(uint8_t first, uint8_t second) {
  if (first != 0xFF || (second & 0xE0) != 0xE0) return "";
  const int layer = second & 0x06;
  if (layer == 0) return (second & 0xF0) == 0xF0 ? kKindAdts : "";
  const bool is_reserved = (second & 0x18) == 0x08;
  return layer == 0x06 || is_reserved ? "" : "MP3";
}

}  // namespace

std::string kind_of(const std::vector<uint8_t>& start) {
  const std::string_view text(reinterpret_cast<const char*>(start.data()),
                              start.size());
  const auto has = [text](size_t offset, std::string_view bytes) {
    return text.size() >= offset + bytes.size() &&
           text.substr(offset, bytes.size()) == bytes;
  };
  for (const Mark& mark : kMarks) {
    if (has(mark.offset, mark.bytes)) return mark.kind;
  }
  if (has(0, "RIFF")) {
    // A form of zeros has not been written yet.
    const bool has_form = has(8, "WAVE") || text.size() < kKindBytes ||
                          text.substr(8, 4) == std::string_view("\0\0\0\0", 4);
    return has_form ? kKindWav : "RIFF of another form";
  }
  return start.size() < 2 ? "" : mpeg_kind(start[0], start[1]);
}

}  // namespace corvane
