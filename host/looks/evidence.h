// What speaks for a file being a capture, beyond what chance puts into any.
#ifndef CORVANE_HOST_LOOKS_EVIDENCE_H_
#define CORVANE_HOST_LOOKS_EVIDENCE_H_

#include <algorithm>
#include <cstdint>

#include "looks/regular_file.h"

namespace corvane {

struct Evidence {
  // In runs of frames, each right behind the one before, that something other
  // than chance has written: they begin with the file, or with a header as the
  // plugin writes it, or are at least five frames long.
  int64_t frame_bytes = 0;
  // Outside of them. Zeros don't count: a power cut leaves them where data was
  // not written.
  int64_t foreign_bytes = 0;
  // Such a run of ten frames of the plugin's own begins with the file or ends
  // with it: whatever else is in it, a capture was written there. The figures
  // need not be complete then.
  bool is_sure = false;

  bool suffices() const {
    return is_sure || foreign_bytes <= std::max(frame_bytes, kNegligible);
  }

  // Foreign bytes among zeros that are no file of another kind: some pieces of
  // headers whose writes a power cut has cut short.
  static constexpr int64_t kNegligible = 64;
};

// Reads the file's first frames, and all of it where they don't decide. What
// cannot be read speaks for the file: the plugin's own look will name the
// failure.
Evidence evidence_in(const RegularFile& file);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_EVIDENCE_H_
