#include "looks/capture_look.h"

#include <algorithm>
#include <cstring>

#include "audio/file_kind.h"
#include "looks/evidence.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr char kLeftAlone[] = "; it was left alone";

}  // namespace

std::string objection_by_start(const RegularFile& file) {
  const std::string kind = kind_of(file.Read(0, kKindBytes));
  if (kind.empty() || kind == kKindAdts) return "";
  return "it starts like " + kind + ", not like an ADTS capture";
}

std::string objection_by_evidence(const RegularFile& file) {
  const Evidence evidence = evidence_in(file);
  if (evidence.suffices()) return "";
  const std::string frame_bytes =
      evidence.frame_bytes == 0
          ? "none"
          : "only " + std::to_string(evidence.frame_bytes);
  return "not a capture: " + frame_bytes + " of its " +
         counted(file.size(), "byte") +
         " belong to AAC frames that follow one another";
}

bool is_taken(const std::string& path, const std::string& objection, bool force,
              Console* console) {
  if (objection.empty()) return true;
  if (force) {
    console->Complain(path + ": " + objection +
                      "; done all the same (--force)");
    return true;
  }
  console->Complain(path + ": " + objection + kLeftAlone);
  console->Complain(path + ": --force takes it for a capture all the same");
  return false;
}

std::string objection_to_file(const RegularFile& file) {
  if (file.is_missing()) return file.error() + "; check the name";
  if (file.is_empty()) return file.error() + ": no audio was recorded into it";
  return file.error();
}

std::string no_frame_in(const RegularFile& file) {
  return "not a capture: there is no whole AAC frame in its " +
         counted(file.size(), "byte") +
         (file.IsAllZeros() ? ", which are all zeros, as after a power cut"
                            : "");
}

std::string left_without_frame(const RegularFile& file) {
  return no_frame_in(file) + kLeftAlone;
}

CaptureLook look_at_capture(const RegularFile& file, bool force) {
  CaptureLook look;
  look.is_missing = file.is_missing();
  if (file.is_empty()) return look;
  look.error = file.error();
  if (!look.error.empty()) return look;
  look.objection = objection_by_start(file);
  if (!look.objection.empty() && !force) return look;

  const int errnum = adts::ScanFile(file.fd(), &look.scan);
  if (errnum != 0) {
    look.error = std::string("it cannot be read: ") + std::strerror(errnum);
    return look;
  }
  // It may have grown since it was opened.
  look.size = std::max(file.size(), look.scan.stream_end);
  if (look.scan.samples > 0) {
    const auto first = first_whole_frame(file);
    if (first) look.format = first->format;
    if (look.objection.empty()) look.objection = objection_by_evidence(file);
  } else if (look.torn_bytes() == 0) {
    look.error = left_without_frame(file);
  }
  return look;
}

CaptureLook look_at_capture(const std::string& path, bool force) {
  return look_at_capture(RegularFile(path), force);
}

std::string next_step(const std::string& path, const std::string& command) {
  const CaptureLook look = look_at_capture(path, true);
  if (!look.error.empty() || look.scan.samples == 0) return "";
  return "the capture is whole up to " + clock_tenths(look.scan.DurationMs()) +
         "; " + command;
}

}  // namespace corvane
