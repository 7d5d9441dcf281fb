#include "looks/foreign_runs.h"

#include <adts/frame.h>

#include <algorithm>
#include <cstddef>
#include <optional>

#include "looks/adts_header.h"

namespace corvane {
namespace {

constexpr size_t kWindowSize = 262144;
constexpr auto kHeaderSize = static_cast<int64_t>(adts::kHeaderSize);
// The longest frame, and the header behind it.
constexpr auto kLookAhead =
    static_cast<int64_t>(adts::kMaxFrameSize) + kHeaderSize;

// One walk from frame to frame, up to the last whole one.
class Walk {
 public:
  Walk(const RegularFile& file, const adts::Scan& scan)
      : file_(file),
        size_(std::max(file.size(), scan.stream_end)),
        end_(scan.valid_end) {}

  ForeignRuns Run() {
    while (position_ < end_) {
      Load(kHeaderSize);
      if (const auto header = header_at(position_)) {
        position_ += header->frame_length;
      } else if (!PassForeign()) {
        break;  // only where the file has changed since the scan
      }
    }
    return runs_;
  }

 private:
  int64_t window_end() const {
    return start_ + static_cast<int64_t>(window_.size());
  }

  // Has the window begin at the position, unless it shows `size` bytes from
  // there on, or all that is left.
  void Load(int64_t size) {
    if (position_ >= start_ &&
        std::min(position_ + size, size_) <= window_end()) {
      return;
    }
    start_ = position_;
    window_ = file_.Read(start_, kWindowSize);
  }

  std::optional<AdtsHeader> header_at(int64_t offset) const {
    if (offset + kHeaderSize > window_end()) return std::nullopt;
    return parse_adts_header(window_.data() + (offset - start_));
  }

  // A header counts only with another one, or the file's end, behind its frame.
  bool is_confirmed() const {
    const auto header = header_at(position_);
    if (!header) return false;
    const int64_t end = position_ + header->frame_length;
    return end == size_ || header_at(end).has_value();
  }

  // Moves on to the next byte that may begin a header, and shows what lies
  // behind it; false where there is none before the end.
  bool FindSyncByte() {
    while (position_ < end_) {
      Load(kLookAhead);
      // Of a window that ends before the file, the rest is looked ahead to.
      const int64_t searched_end =
          window_end() - (window_end() >= size_ ? 0 : kLookAhead - 1);
      const auto begin = window_.begin() + (position_ - start_);
      const auto end = window_.begin() + (searched_end - start_);
      if (begin >= end) return false;  // it can't be read any more
      const auto found = std::find(begin, end, 0xFF);
      position_ = start_ + (found - window_.begin());
      if (found != end) return true;
    }
    return false;
  }

  // Moves to the next frame; false where there is none.
  bool PassForeign() {
    const int64_t begin = position_++;
    for (; FindSyncByte(); ++position_) {
      if (is_confirmed()) {
        Add({begin, position_ - begin});
        return true;
      }
    }
    return false;
  }

  void Add(const ForeignRun& run) {
    ++runs_.count;
    runs_.bytes += run.bytes;
    if (runs_.count <= ForeignRuns::kMostListed) runs_.listed.push_back(run);
  }

  const RegularFile& file_;
  const int64_t size_;
  const int64_t end_;  // of the last whole frame
  std::vector<uint8_t> window_;
  int64_t start_ = 0;  // of the window
  int64_t position_ = 0;
  ForeignRuns runs_;
};

}  // namespace

ForeignRuns foreign_runs_in(const RegularFile& file, const adts::Scan& scan) {
  if (scan.skipped_bytes == 0) return {};
  return Walk(file, scan).Run();
}

}  // namespace corvane
