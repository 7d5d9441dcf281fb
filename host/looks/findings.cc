#include "looks/findings.h"

#include "terminal/wording.h"

namespace corvane {
namespace {

std::string foreign(int64_t bytes, const std::string& place, bool will_be) {
  if (bytes == 0) return "";
  return "; " + counted(bytes, "foreign byte") + " " + place +
         (will_be ? " will stay" : " stayed");
}

std::string torn(int64_t bytes, bool will_be) {
  if (bytes == 0) return "nothing is torn";
  const char* const fate = will_be      ? " will be cut off"
                           : bytes == 1 ? " was cut off"
                                        : " were cut off";
  return counted(bytes, "torn byte") + fate;
}

}  // namespace

Findings findings_of(const CaptureLook& look) {
  return {look.frames(), look.scan.DurationMs(), look.torn_bytes(),
          look.scan.skipped_bytes, look.scan.stream_end - look.scan.valid_end};
}

std::string found(const Findings& findings, bool will_be) {
  const std::string frames =
      findings.frames ? counted(*findings.frames, "whole AAC frame") + ", "
                      : "";
  return "found " + frames + clock_tenths(findings.duration_ms) +
         " of audio; " + torn(findings.torn_bytes, will_be) +
         foreign(findings.foreign_between, "between the frames", will_be) +
         foreign(findings.foreign_behind, "behind the last frame", will_be);
}

}  // namespace corvane
