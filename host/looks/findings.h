// What a look found in a capture, in the words that each command says it in.
#ifndef CORVANE_HOST_LOOKS_FINDINGS_H_
#define CORVANE_HOST_LOOKS_FINDINGS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "looks/capture_look.h"

namespace corvane {

// All but the duration in bytes, or as counts of what their names say.
struct Findings {
  std::optional<int64_t> frames;  // where they were counted
  int64_t duration_ms = 0;
  int64_t torn_bytes = 0;
  int64_t foreign_between = 0;  // in front of frames and between them
  int64_t foreign_behind = 0;   // behind the last whole frame
};

Findings findings_of(const CaptureLook& look);

// A clause that tells them, and what becomes of each: `will_be` before
// anything is done, what was done behind it.
std::string found(const Findings& findings, bool will_be);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_FINDINGS_H_
