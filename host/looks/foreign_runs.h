// Where the foreign bytes of a capture are; a scan only counts them.
#ifndef CORVANE_HOST_LOOKS_FOREIGN_RUNS_H_
#define CORVANE_HOST_LOOKS_FOREIGN_RUNS_H_

#include <adts/scan.h>

#include <cstdint>
#include <vector>

#include "looks/regular_file.h"

namespace corvane {

struct ForeignRun {
  int64_t offset = 0;  // bytes from the start of the file
  int64_t bytes = 0;
};

struct ForeignRuns {
  // In the file's order; beyond this many they are only counted.
  static constexpr int64_t kMostListed = 10000;

  std::vector<ForeignRun> listed;
  int64_t count = 0;
  int64_t bytes = 0;  // of all of them
};

// The runs in front of frames and between them, by the rules of adts::ScanFile:
// they sum up to the `skipped_bytes` of `scan`, which is that of `file`. Reads
// the file up to the last whole frame, and nothing where nothing was skipped.
ForeignRuns foreign_runs_in(const RegularFile& file, const adts::Scan& scan);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_FOREIGN_RUNS_H_
