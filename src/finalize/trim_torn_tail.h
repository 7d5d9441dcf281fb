// The one repair of a capture: a torn tail is cut off. Worker thread.
#ifndef CORVANE_SRC_FINALIZE_TRIM_TORN_TAIL_H_
#define CORVANE_SRC_FINALIZE_TRIM_TORN_TAIL_H_

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "adts/scan.h"
#include "report/native_error.h"
#include "worker/plugin_state.h"

namespace {

// Scans the capture behind `fd` (borrowed, open for writing) into `scan`, which
// the caller has zeroed, and cuts the file to the scan's `stream_end`; foreign
// bytes between frames are reported and stay. Returns 0 or an errno value.
// Syncing is the caller's. `path` is for the log.
int trim_torn_tail(PluginState* state, int fd, const std::string& path,
                   adts::Scan* scan) {
  const int scanned = adts::ScanFile(fd, scan);
  if (scanned != 0) {
    return scanned;
  }
  struct stat status;
  if (fstat(fd, &status) != 0) {
    return failure_errno();
  }
  if (status.st_size > scan->stream_end) {
    // Said first: what a failing cut leaves behind is then explained.
    state->Log(kLevelWarning,
               "dropping " + std::to_string(status.st_size - scan->stream_end) +
                   " torn trailing bytes from " + path);
    if (ftruncate(fd, scan->stream_end) != 0) {
      return failure_errno();
    }
  }
  if (scan->skipped_bytes > 0) {
    state->Log(kLevelWarning,
               path + " has " + std::to_string(scan->skipped_bytes) +
                   " non-ADTS bytes between frames; left in place");
  }
  return 0;
}

}  // namespace

#endif  // CORVANE_SRC_FINALIZE_TRIM_TORN_TAIL_H_
