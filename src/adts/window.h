// What the scan reads a file through: one window of 64 KiB, which goes forward
// on a sound file and so reads it once.
#ifndef CORVANE_ADTS_WINDOW_H_
#define CORVANE_ADTS_WINDOW_H_

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "adts/header.h"

namespace adts {

constexpr size_t kWindowSize = 65536;
constexpr int64_t kHeaderBytes = kParsedBytes;

// The reason of the call that just failed. One that gives none has failed all
// the same: 0 would pass for success, and a file for empty.
inline int FailureReason() { return errno == 0 ? EIO : errno; }

// A positioned read buffer that restarts at whatever offset it does not hold.
// The descriptor stays its owner's; one thread at a time.
struct Window {
  explicit Window(int file) : fd(file), buffer(kWindowSize) {}

  // The byte at `offset`, or -1 past the end or where nothing can be read.
  int ByteAt(int64_t offset);

  // True, with `header` filled, when a valid header stands at `offset`.
  bool HeaderAt(int64_t offset, Header* header) {
    return Holds(offset, kHeaderBytes) ? ParseHeader(At(offset), header)
                                       : SplitHeaderAt(offset, header);
  }
  bool SplitHeaderAt(int64_t offset, Header* header);

  // The first offset from `offset` on, a buffered one, where a confirmed frame
  // may begin as far as the window shows; its end when there is none.
  int64_t FindFrame(int64_t offset) const {
    const auto from = static_cast<size_t>(offset - start);
    return start +
           static_cast<int64_t>(adts::FindFrame(buffer.data(), from, valid));
  }

  bool Holds(int64_t offset, int64_t size) const {
    return offset >= start &&
           offset + size <= start + static_cast<int64_t>(valid);
  }
  const uint8_t* At(int64_t offset) const {
    return buffer.data() + (offset - start);
  }
  void Fill();

  const int fd;
  std::vector<uint8_t> buffer;
  int64_t start = 0;   // file offset of the first buffered byte
  size_t valid = 0;    // buffered bytes
  int read_error = 0;  // the first errno of a failed read
  // Where a read has met the end of the file; it is not looked for again.
  int64_t file_end = std::numeric_limits<int64_t>::max();
};

}  // namespace adts

#endif  // CORVANE_ADTS_WINDOW_H_
