#include "audio/file_kind.h"

#include <algorithm>
#include <iterator>
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
    {0,
     "\x7F"
     "ELF",
     "ELF (a program or library)"},
    {0, "%PDF", "PDF"},
    {0, "PK\x03\x04", "ZIP"},
    {0, "PK\x05\x06", "ZIP"},
    {0, "7z\xBC\xAF\x27\x1C", "7-Zip"},
    {0, "\x1F\x8B", "gzip"},
    {0, "BZh", "bzip2"},
    {0,
     "\xFD"
     "7zXZ",
     "XZ"},
    {0, "\x28\xB5\x2F\xFD", "Zstandard"},
    {0, "\xFF\xD8\xFF", "JPEG"},
    {0, "\x89PNG", "PNG"},
    {0, "GIF8", "GIF"},
    {257, "ustar", "tar"},
    {4, "ftyp", "MP4"},
    {4, "moov", "MP4"},
    {4, "mdat", "MP4"},
};

// What is likely to be piped in by mistake.
constexpr std::string_view kFilesOfAudio[] = {"RIFF", "fLaC", "OggS", "ID3"};

// MPEG audio and ADTS share their first eleven bits; the layer parts them.
// Layer I is in no use, but UTF-16 text starts like it.
const char* mpeg_kind(uint8_t first, uint8_t second) {
  if (first != 0xFF || (second & 0xE0) != 0xE0) return "";
  const int layer = second & 0x06;
  if (layer == 0) return (second & 0xF0) == 0xF0 ? kKindAdts : "";
  const bool is_reserved = (second & 0x18) == 0x08;
  return layer == 0x06 || is_reserved ? "" : "MP3";
}

std::string_view as_text(const std::vector<uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

std::string kind_of(const std::vector<uint8_t>& start) {
  const std::string_view text = as_text(start);
  const auto has = [text](size_t offset, std::string_view bytes) {
    return text.size() >= offset + bytes.size() &&
           text.substr(offset, bytes.size()) == bytes;
  };
  for (const Mark& mark : kMarks) {
    if (has(mark.offset, mark.bytes)) return mark.kind;
  }
  if (has(0, "RIFF")) {
    // A form of zeros has not been written yet.
    const bool has_form = has(8, "WAVE") || text.size() < 12 ||
                          text.substr(8, 4) == std::string_view("\0\0\0\0", 4);
    return has_form ? kKindWav : "RIFF of another form";
  }
  return start.size() < 2 ? "" : mpeg_kind(start[0], start[1]);
}

std::string kind_instead_of_samples(const std::vector<uint8_t>& start) {
  for (const std::string_view mark : kFilesOfAudio) {
    if (as_text(start).substr(0, mark.size()) == mark) return kind_of(start);
  }
  return "";
}

bool may_become_a_kind(const std::vector<uint8_t>& start) {
  return std::any_of(std::begin(kFilesOfAudio), std::end(kFilesOfAudio),
                     [text = as_text(start)](std::string_view mark) {
                       return text.size() < mark.size() &&
                              mark.substr(0, text.size()) == text;
                     });
}

}  // namespace corvane
