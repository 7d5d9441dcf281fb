#include "naive_scan.h"

#include <optional>

namespace corvane_test {
namespace {

// Typed out once more on purpose: a wrong entry in the product's own table
// must not be able to agree with itself.
constexpr int kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                          22050, 16000, 12000, 11025, 8000,  7350};

struct FoundHeader {
  int64_t end;  // file offset just past the frame, by the header's own word
  int samples;
  int sample_rate;
};

class Image {
 public:
  Image(const uint8_t* data, size_t present, int64_t size)
      : data_(data), present_(static_cast<int64_t>(present)), size_(size) {}

  int64_t size() const { return size_; }

  bool Has(int64_t from, int64_t count) const {
    return from + count <= present_;
  }

  // `count` bits from bit `first` after byte `at`, most significant first.
  int Bits(int64_t at, int first, int count) const {
    int value = 0;
    for (int bit = first; bit < first + count; ++bit) {
      const int byte = data_[at + bit / 8];
      value = value * 2 + ((byte >> (7 - bit % 8)) & 1);
    }
    return value;
  }

  std::optional<FoundHeader> Header(int64_t at) const {
    if (!Has(at, 7)) return std::nullopt;
    const int syncword = Bits(at, 0, 12);
    const int layer = Bits(at, 13, 2);
    const int rate_index = Bits(at, 18, 4);
    if (syncword != 0xFFF || layer != 0 || rate_index > 12) return std::nullopt;
    const int header_length = Bits(at, 15, 1) == 1 ? 7 : 9;
    const int frame_length = Bits(at, 30, 13);
    if (frame_length <= header_length) return std::nullopt;
    return FoundHeader{at + frame_length, (Bits(at, 54, 2) + 1) * 1024,
                       kRates[rate_index]};
  }

  // The last 1 to 6 bytes are a header that was cut short: its first byte, or
  // a syncword with layer 0.
  bool TornHeader(int64_t at) const {
    const int64_t left = size_ - at;
    if (left < 1 || left > 6 || !Has(at, 1) || Bits(at, 0, 8) != 0xFF) {
      return false;
    }
    if (left == 1) return true;
    return Has(at, 2) && Bits(at, 8, 4) == 0xF && Bits(at, 13, 2) == 0;
  }

  // A frame in unknown surroundings counts only when the file ends with it or
  // another header follows it.
  bool Confirmed(int64_t at) const {
    const auto header = Header(at);
    if (!header) return false;
    if (header->end == size_) return true;
    return header->end < size_ && Header(header->end).has_value();
  }

  // Offset of the first frame after the foreign byte at `at`; -1 when none.
  int64_t Resynchronise(int64_t at) const {
    for (int64_t c = at + 1; c + 7 <= size_; ++c) {
      if (Confirmed(c)) return c;
    }
    return -1;
  }

 private:
  const uint8_t* data_;
  int64_t present_;
  int64_t size_;
};

}  // namespace

adts::Scan NaiveScan(const uint8_t* data, size_t present, int64_t size) {
  const Image image(data, present, size);
  adts::Scan scan{};
  scan.stream_end = size;
  int64_t pos = 0;
  while (pos < size) {
    const auto header = image.Header(pos);
    if (header && header->end <= size) {
      scan.samples += header->samples;
      scan.sample_rate = header->sample_rate;
      scan.valid_end = pos = header->end;
      continue;
    }
    if (header || image.TornHeader(pos)) {
      scan.stream_end = pos;
      break;
    }
    const int64_t next = image.Resynchronise(pos);
    if (next < 0) break;
    scan.skipped_bytes += next - pos;
    pos = next;
  }
  return scan;
}

adts::Scan NaiveScan(const std::vector<uint8_t>& bytes) {
  return NaiveScan(bytes.data(), bytes.size(),
                   static_cast<int64_t>(bytes.size()));
}

bool SameScan(const adts::Scan& a, const adts::Scan& b) {
  return a.valid_end == b.valid_end && a.stream_end == b.stream_end &&
         a.samples == b.samples && a.sample_rate == b.sample_rate &&
         a.skipped_bytes == b.skipped_bytes;
}

}  // namespace corvane_test

namespace adts {

void PrintTo(const Scan& scan, std::ostream* out) {
  *out << "{valid_end=" << scan.valid_end << " stream_end=" << scan.stream_end
       << " samples=" << scan.samples << " sample_rate=" << scan.sample_rate
       << " skipped_bytes=" << scan.skipped_bytes << "}";
}

}  // namespace adts
