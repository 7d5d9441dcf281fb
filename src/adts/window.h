// What the scan reads a file through: one window of 64 KiB, which goes forward
// on a sound file and so reads it once.
#ifndef CORVANE_SRC_ADTS_WINDOW_H_
#define CORVANE_SRC_ADTS_WINDOW_H_

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "adts/header.h"

namespace adts {
namespace {

constexpr size_t kWindowSize = 65536;
constexpr int64_t kHeaderBytes = kParsedBytes;
constexpr size_t kCacheLine = 64;         // bytes, of nearly all processors
constexpr size_t kLongestFrame = 0x1FFF;  // bytes; 13 bits tell the length
// Behind the window, so that a place may be named two frames beyond it.
constexpr size_t kRoomBehind = 2 * kLongestFrame + kCacheLine;

// The reason of the call that just failed. One that gives none has failed all
// the same: 0 would pass for success, and a file for empty.
inline int FailureReason() { return errno == 0 ? EIO : errno; }

// A positioned read buffer that restarts at whatever offset it does not hold.
// The descriptor stays its owner's; one thread at a time.
struct Window {
  explicit Window(int file) : fd(file), buffer(kWindowSize + kRoomBehind) {}

  // The byte at `offset`, or -1 past the end or where nothing can be read.
  int ByteAt(int64_t offset);

  // True, with `header` filled, when a valid header stands at `offset`.
  bool HeaderAt(int64_t offset, Header* header) {
    return Holds(offset, kHeaderBytes) ? ParseHeader(At(offset), header)
                                       : SplitHeaderAt(offset, header);
  }
  bool SplitHeaderAt(int64_t offset, Header* header);

  // The first offset from `offset` on, a buffered one, where a confirmed frame
  // may begin as far as the window shows of a file of `size` bytes; the end of
  // what it shows when there is none. What a file has grown by is not looked
  // at.
  int64_t FindFrame(int64_t offset, int64_t size) const {
    const auto from = static_cast<size_t>(offset - start);
    const size_t end = std::min(valid, static_cast<size_t>(size - start));
    return start +
           static_cast<int64_t>(adts::FindFrame(buffer.data(), from, end));
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

inline void Window::Fill() {
  while (valid < kWindowSize) {
    const ssize_t count =
        pread(fd, buffer.data() + valid, kWindowSize - valid,
              static_cast<off_t>(start + static_cast<int64_t>(valid)));
    if (count > 0) {
      valid += static_cast<size_t>(count);
    } else if (count == 0) {
      file_end = start + static_cast<int64_t>(valid);
      return;
    } else if (errno != EINTR) {
      read_error = read_error == 0 ? FailureReason() : read_error;
      return;
    }
  }
}

inline int Window::ByteAt(int64_t offset) {
  if (offset >= file_end) {
    return -1;
  }
  if (!Holds(offset, 1)) {
    start = offset;
    valid = 0;
    Fill();
  }
  return valid == 0 ? -1 : *At(offset);
}

// Byte by byte, for the window moves to the first one that it does not hold.
inline bool Window::SplitHeaderAt(int64_t offset, Header* header) {
  std::array<uint8_t, kHeaderBytes> bytes;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const int byte = ByteAt(offset + static_cast<int64_t>(i));
    if (byte < 0) {
      return false;
    }
    bytes[i] = static_cast<uint8_t>(byte);
  }
  return ParseHeader(bytes.data(), header);
}

}  // namespace
}  // namespace adts

#endif  // CORVANE_SRC_ADTS_WINDOW_H_
