#include "adts/scan.h"

#include <sys/stat.h>

#include "adts/header.h"
#include "adts/window.h"

namespace adts {
namespace {

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

// Has the processor fetch what lies where, if this frame is as long as the one
// before it, the header after the next will be: the lengths lead from one
// header to the next, so that it can't tell by itself. Two cache lines, since
// lengths differ.
void FetchAhead(const uint8_t* place) {
  __builtin_prefetch(place);
  __builtin_prefetch(place + kCacheLine);
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
    FetchAhead(bytes + at + header.frame_length);
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
    candidate = window.FindFrame(candidate, size);
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
