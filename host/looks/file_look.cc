#include "looks/file_look.h"

#include "audio/file_kind.h"
#include "looks/dead_wav.h"

namespace corvane {
namespace {

// Why it is no capture, as a clause; empty when it is one.
std::string objection_to_capture(const RegularFile& file,
                                 const CaptureLook& look, bool is_in_use) {
  if (look.size == 0) return look.error + look.objection;  // it has no figures
  if (look.scan.samples > 0) return look.objection;
  return is_in_use ? "" : no_frame_in(file);
}

// What is wrong with a WAV file, or with what must have been one.
void tell_of_wav(const std::string& path, const RegularFile& file,
                 FileLook* look) {
  const bool is_wav = look->kind == kKindWav;
  const bool has_frames = look->capture && look->capture->scan.samples > 0;
  if (!is_wav && (has_frames || file.IsAllZeros())) return;
  const std::string damage = objection_to_dead_wav(path);
  look->needs_repair = is_wav && !damage.empty();
  const std::string more = damage.empty() ? shortage_of_wav(path) : damage;
  if (!more.empty()) look->error += "; " + more;
}

void look_into(const std::string& path, const RegularFile& file, bool is_in_use,
               FileLook* look) {
  look->kind = kind_of(file.Read(0, kKindBytes));
  const CaptureLook capture = look_at_capture(file, false);
  look->error = objection_to_capture(file, capture, is_in_use);
  if (capture.size > 0) {
    look->size = capture.size;
    look->foreign = foreign_runs_in(file, capture.scan);
    look->capture = capture;
  }
  if (look->is_capture()) {
    look->kind = kKindAdts;
  } else {
    tell_of_wav(path, file, look);
  }
}

}  // namespace

FileLook look_at_file(const std::string& path, bool is_in_use) {
  FileLook look;
  const RegularFile file(path);
  if (file.error().empty() || file.is_empty()) look.size = file.size();
  if (file.is_empty() && is_in_use) {
    look.capture = CaptureLook();
    look.kind = kKindAdts;
    return look;
  }
  look.error = objection_to_file(file);
  if (look.is_capture()) look_into(path, file, is_in_use, &look);
  return look;
}

}  // namespace corvane
