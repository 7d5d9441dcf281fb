#include "adts/window.h"

#include <unistd.h>

#include <array>

namespace adts {

void Window::Fill() {
  while (valid < buffer.size()) {
    const ssize_t count =
        pread(fd, buffer.data() + valid, buffer.size() - valid,
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

int Window::ByteAt(int64_t offset) {
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
bool Window::SplitHeaderAt(int64_t offset, Header* header) {
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

}  // namespace adts
