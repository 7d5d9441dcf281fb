#include "looks/first_frame.h"

#include <adts/frame.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "looks/adts_header.h"

namespace corvane {
namespace {

constexpr size_t kWindowSize = 65536;

std::optional<AdtsHeader> header_at(const RegularFile& file, int64_t offset) {
  const std::vector<uint8_t> bytes = file.Read(offset, adts::kHeaderSize);
  if (bytes.size() < adts::kHeaderSize) return std::nullopt;
  return parse_adts_header(bytes.data());
}

// A frame behind foreign bytes counts only with another header, or the end of
// the file, right behind it.
std::optional<FirstFrame> confirmed_at(const RegularFile& file,
                                       int64_t offset) {
  const std::optional<AdtsHeader> header = header_at(file, offset);
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
      const auto left = static_cast<size_t>(window.end() - at);
      if (left >= adts::kHeaderSize && !parse_adts_header(&*at)) continue;
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
  const std::optional<AdtsHeader> header = header_at(file, 0);
  if (!header) return search_behind_start(file);
  // A torn frame hides all that stands behind its header.
  if (header->frame_length > file.size()) return std::nullopt;
  return FirstFrame{0, header->format};
}

}  // namespace corvane
