// Reading back of ADTS files: how far a capture can be trusted. Any thread that
// owns the descriptor for the call.
#ifndef CORVANE_SRC_ADTS_SCAN_H_
#define CORVANE_SRC_ADTS_SCAN_H_

#include <cstdint>

namespace adts {

// The result of a scan; offsets are bytes from the start of the file.
struct Scan {
  // Just past the last complete frame accepted; 0 when there is none.
  int64_t valid_end;
  // Where a torn last frame begins, else the file's size. All from here to the
  // end of the file may be cut off.
  int64_t stream_end;
  // Samples per channel in all complete frames accepted.
  int64_t samples;
  // Hz, of the last complete frame accepted; 0 when there is none.
  int32_t sample_rate;
  // Foreign bytes skipped between frames.
  int64_t skipped_bytes;

  // Milliseconds, rounded down; 0 while the rate is unknown. Computed with the
  // last frame's rate alone, so a file of mixed rates is only estimated.
  int64_t DurationMs() const;
};

// Scans the whole file behind `fd`, which is borrowed and must be readable. Its
// file offset is neither used nor moved (pread(2)).
//
// Returns 0 and fills `scan`, or returns the errno of fstat or of the first
// failed read and leaves `scan` alone. Malformed data is never an error. A
// header may be any that ISO/IEC 14496-3 allows, also those that this project
// never writes: MPEG-2 ID, CRC, several raw data blocks.
int ScanFile(int fd, Scan* scan);

}  // namespace adts

#endif  // CORVANE_SRC_ADTS_SCAN_H_
