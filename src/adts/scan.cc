#include "adts/scan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <vector>

#include "adts/header.h"

namespace adts {
namespace {

constexpr size_t kWindowSize = 65536;
constexpr int64_t kHeaderBytes = kParsedBytes;

// The reason of the call that just failed. One that gives none has failed all
// the same: 0 would pass for success, and a file for empty.
int FailureReason() { return errno == 0 ? EIO : errno; }

// A positioned read buffer that restarts at whatever offset it does not hold.
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

// One pass over a file of `length` bytes, `length` above 0.
class Scanner {
 public:
  Scanner(int fd, int64_t length) : window(fd), size(length) {
    totals.stream_end = size;
  }

  // 0 and `scan` filled, or the errno of the first failed read.
  int Run(Scan* scan);

 private:
  void AcceptBufferedFrames();
  bool Step();
  bool Accept(const Header& header);
  bool IsCutHeader();
  bool Resynchronise();
  bool IsConfirmed(int64_t candidate);

  Window window;
  const int64_t size;
  int64_t position = 0;
  Scan totals = {};
};

int Scanner::Run(Scan* scan) {
  do {
    AcceptBufferedFrames();
  } while (position < size && Step());
  if (window.read_error != 0) {
    return window.read_error;
  }
  *scan = totals;
  return 0;
}

// Moves past the frames whose headers the window holds. What decides the time
// is from one length to the next header; all else stays in registers meanwhile.
void Scanner::AcceptBufferedFrames() {
  if (!window.Holds(position, kHeaderBytes)) {
    return;
  }
  const uint8_t* const bytes = window.buffer.data();
  const int64_t last_header = static_cast<int64_t>(window.valid) - kHeaderBytes;
  const int64_t end = size - window.start;
  int64_t at = position - window.start;
  int64_t samples = 0;
  Header header = {};
  while (at <= last_header && ParseHeader(bytes + at, &header) &&
         at + header.frame_length <= end) {
    at += header.frame_length;
    samples += header.samples;
    totals.sample_rate = header.sample_rate;
  }
  if (samples > 0) {
    position = window.start + at;
    totals.valid_end = position;
    totals.samples += samples;
  }
}

// Moves past one frame or one run of foreign bytes; false ends the scan.
bool Scanner::Step() {
  Header header;
  if (window.HeaderAt(position, &header)) {
    return Accept(header);
  }
  if (window.read_error != 0) {
    return false;
  }
  if (IsCutHeader()) {
    totals.stream_end = position;
    return false;
  }
  return Resynchronise();
}

// False when the frame runs past the end of the file: it is torn, and nothing
// behind its header can be told from its payload.
bool Scanner::Accept(const Header& header) {
  if (position + header.frame_length > size) {
    totals.stream_end = position;
    return false;
  }
  position += header.frame_length;
  totals.valid_end = position;
  totals.samples += header.samples;
  totals.sample_rate = header.sample_rate;
  return true;
}

// Whether the file ends at most six bytes into what begins like a header.
bool Scanner::IsCutHeader() {
  const int64_t left = size - position;
  if (left >= kHeaderBytes || window.ByteAt(position) != 0xFF) {
    return false;
  }
  return left == 1 || (window.ByteAt(position + 1) & 0xF6) == 0xF0;
}

// Moves to the next frame behind foreign bytes; false when there is none.
//
// Linear in the bytes searched, whatever they are: each is tested once, and
// read again only where a look-ahead has moved the window away. That takes a
// candidate among the window's last 8197 bytes and three reads at most: for the
// rest of its own header, for the next header, and back. The window then begins
// behind the candidate, so that the next such one is 57 KiB further on, or the
// window holds all that is left of the file.
bool Scanner::Resynchronise() {
  for (int64_t candidate = position + 1; candidate + kHeaderBytes <= size;) {
    if (window.ByteAt(candidate) < 0 || window.read_error != 0) {
      return false;  // unreadable, or cut shorter meanwhile
    }
    candidate = window.FindFrame(candidate);
    if (!window.Holds(candidate, 1)) {
      continue;  // none in the whole window
    }
    if (IsConfirmed(candidate)) {
      totals.skipped_bytes += candidate - position;
      position = candidate;
      return true;
    }
    ++candidate;
  }
  return false;
}

// A syncword occurs by chance: a frame counts only with another header, or
// the end of the file, right behind it.
bool Scanner::IsConfirmed(int64_t candidate) {
  Header header;
  if (!window.HeaderAt(candidate, &header)) {
    return false;
  }
  const int64_t end = candidate + header.frame_length;
  return end == size || (end < size && window.HeaderAt(end, &header));
}

}  // namespace

int64_t Scan::DurationMs() const {
  return sample_rate < 1 ? 0 : samples * 1000 / sample_rate;
}

int ScanFile(int fd, Scan* scan) {
  struct stat status;
  if (fstat(fd, &status) != 0) {
    return FailureReason();
  }
  if (status.st_size <= 0) {
    *scan = {0, status.st_size, 0, 0, 0};
    return 0;
  }
  return Scanner(fd, status.st_size).Run(scan);
}

}  // namespace adts
