#include "looks/evidence.h"

#include <adts/frame.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include "looks/adts_header.h"

namespace corvane {
namespace {

constexpr size_t kWindowSize = 262144;
constexpr auto kHeaderSize = static_cast<int64_t>(adts::kHeaderSize);
// Any five headers in their places take 70 bits to agree by chance.
constexpr int kFramesBeyondChance = 5;
// What a look for five reads at most.
constexpr auto kLookAhead = static_cast<int64_t>(
    (kFramesBeyondChance - 1) * adts::kMaxFrameSize + adts::kHeaderSize);
// A fifth of a second; no other kind of file begins or ends with it.
constexpr int kSureFrames = 10;

// One walk over a file, from run to run.
class Walk {
 public:
  explicit Walk(const RegularFile& file) : file_(file) {}

  Evidence Run() {
    while (position_ < file_.size() && !evidence_.is_sure) {
      if (run_begins_at(position_)) {
        PassRun();
      } else {
        PassForeign();
      }
    }
    return evidence_;
  }

 private:
  bool has_window_at(int64_t offset, int64_t size) const {
    return offset >= start_ &&
           offset + size <= start_ + static_cast<int64_t>(window_.size());
  }
  const uint8_t* at(int64_t offset) const {
    return window_.data() + (offset - start_);
  }

  // How far a search may go before the window has to follow: as far as it shows
  // what is looked ahead to, or the file's end.
  ptrdiff_t searched_bytes() const {
    const int64_t end = start_ + static_cast<int64_t>(window_.size());
    return end - position_ - (end == file_.size() ? 0 : kLookAhead - 1);
  }

  std::optional<AdtsHeader> header_at(int64_t offset) const {
    if (has_window_at(offset, kHeaderSize)) {
      return parse_adts_header(at(offset));
    }
    const auto bytes = file_.Read(offset, adts::kHeaderSize);
    if (bytes.size() < adts::kHeaderSize) return std::nullopt;
    return parse_adts_header(bytes.data());
  }

  bool run_begins_at(int64_t offset) const {
    std::optional<AdtsHeader> header = header_at(offset);
    if (!header) return false;
    if (offset == 0 || header->is_own) return true;
    for (int frames = 1; frames < kFramesBeyondChance; ++frames) {
      offset += header->frame_length;
      header = header_at(offset);
      if (!header) return false;
    }
    return true;
  }

  // Has the window hold `size` bytes from the position on, or all that is left.
  void Load(int64_t size) {
    const int64_t left = file_.size() - position_;
    if (has_window_at(position_, std::min(size, left))) return;
    start_ = position_;
    window_ =
        file_.Read(start_, std::min(kWindowSize, static_cast<size_t>(left)));
    if (!has_window_at(position_, std::min(size, left))) {
      evidence_.is_sure = true;
    }
  }

  // The last frame of a run may be torn.
  void PassRun() {
    const int64_t begin = position_;
    int own_frames = 0;
    while (position_ < file_.size() && !evidence_.is_sure) {
      Load(kHeaderSize);
      const auto header = header_at(position_);
      if (!header) break;
      own_frames += header->is_own ? 1 : 0;
      position_ = std::min(position_ + header->frame_length, file_.size());
      const bool is_at_an_end =
          begin == 0 || file_.size() - position_ < kHeaderSize;
      if (own_frames >= kSureFrames && is_at_an_end) evidence_.is_sure = true;
    }
    evidence_.frame_bytes += position_ - begin;
  }

  // Moves to the next run; to the file's end when there is none.
  void PassForeign() {
    do {
      Load(kLookAhead);
      if (evidence_.is_sure) return;
      const uint8_t* const begin = at(position_);
      const uint8_t* const end = begin + searched_bytes();
      // The byte at the position is none that a run begins with.
      const uint8_t* const next = std::find(begin + 1, end, 0xFF);
      evidence_.foreign_bytes +=
          (next - begin) - std::count(begin, next, uint8_t{0});
      position_ += next - begin;
    } while (position_ < file_.size() && !run_begins_at(position_));
  }

  const RegularFile& file_;
  std::vector<uint8_t> window_;
  int64_t start_ = 0;  // of the window
  int64_t position_ = 0;
  Evidence evidence_;
};

}  // namespace

Evidence evidence_in(const RegularFile& file) { return Walk(file).Run(); }

}  // namespace corvane
