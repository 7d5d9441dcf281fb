#include "looks/first_frame.h"

#include <adts/frame.h>

#include <algorithm>
#include <cstddef>
#include <vector>

#include "looks/adts_header.h"

namespace corvane {
namespace {

constexpr size_t kWindowSize = 65536;
// Read with each window: the longest frame, and the header behind it.
constexpr size_t kLookAhead = adts::kMaxFrameSize + adts::kHeaderSize;

// The header at `index`; nothing where the bytes end before it does.
std::optional<AdtsHeader> header_at(const std::vector<uint8_t>& bytes,
                                    size_t index) {
  if (index + adts::kHeaderSize > bytes.size()) return std::nullopt;
  return parse_adts_header(bytes.data() + index);
}

// A frame behind foreign bytes counts only with another header, or the end of
// the file, right behind it. `bytes` reach as far, or to that end.
std::optional<PcmFormat> confirmed_at(const std::vector<uint8_t>& bytes,
                                      size_t index) {
  const std::optional<AdtsHeader> header = header_at(bytes, index);
  if (!header) return std::nullopt;
  const size_t end = index + static_cast<size_t>(header->frame_length);
  if (end != bytes.size() && !header_at(bytes, end)) return std::nullopt;
  return header->format;
}

std::optional<FirstFrame> search_behind_start(const RegularFile& file) {
  for (int64_t start = 1; start < file.size();
       start += static_cast<int64_t>(kWindowSize)) {
    const std::vector<uint8_t> bytes =
        file.Read(start, kWindowSize + kLookAhead);
    const size_t size = std::min(bytes.size(), kWindowSize);
    const auto end = bytes.begin() + static_cast<ptrdiff_t>(size);
    for (auto at = bytes.begin(); (at = std::find(at, end, 0xFF)) != end;
         ++at) {
      const auto index = static_cast<size_t>(at - bytes.begin());
      if (const auto format = confirmed_at(bytes, index)) {
        return FirstFrame{start + static_cast<int64_t>(index), *format};
      }
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<FirstFrame> first_whole_frame(const RegularFile& file) {
  const std::optional<AdtsHeader> header =
      header_at(file.Read(0, adts::kHeaderSize), 0);
  if (!header) return search_behind_start(file);
  // A torn frame hides all that stands behind its header.
  if (header->frame_length > file.size()) return std::nullopt;
  return FirstFrame{0, header->format};
}

}  // namespace corvane
