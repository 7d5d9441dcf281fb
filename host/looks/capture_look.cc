#include "looks/capture_look.h"

#include <cstring>

#include "audio/file_kind.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr char kLeftAlone[] = "; it was left alone";

}  // namespace

std::string why_no_capture(const RegularFile& file) {
  const std::string kind = kind_of(file.Read(0, kKindBytes));
  if (kind.empty() || kind == kKindAdts || kind == kKindTagged) return "";
  return "it starts like " + kind + ", not like an ADTS capture" + kLeftAlone;
}

std::string no_frame_in(int64_t bytes) {
  return "not a capture: there is no whole AAC frame in its " +
         counted(bytes, "byte") + kLeftAlone;
}

CaptureLook look_at_capture(const std::string& path) {
  CaptureLook look;
  const RegularFile file(path);
  look.is_missing = file.is_missing();
  if (file.is_empty()) return look;
  look.error = file.error();
  if (look.error.empty()) look.error = why_no_capture(file);
  if (!look.error.empty()) return look;

  look.size = file.size();
  const int errnum = adts::ScanFile(file.fd(), &look.scan);
  if (errnum != 0) {
    look.error = std::string("it cannot be read: ") + std::strerror(errnum);
    return look;
  }
  if (look.scan.samples > 0) {
    const auto first = first_whole_frame(file);
    if (first) look.format = first->format;
  } else if (look.torn_bytes() == 0) {
    look.error = no_frame_in(look.size);
  }
  return look;
}

std::string next_step(const std::string& path, const std::string& command) {
  const CaptureLook look = look_at_capture(path);
  if (!look.error.empty() || look.scan.samples == 0) return "";
  return "the capture is whole up to " + clock_tenths(look.scan.DurationMs()) +
         "; " + command;
}

}  // namespace corvane
