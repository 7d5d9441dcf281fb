#include "take/take_json.h"

#include <string>

#include "terminal/json_output.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kUsPerMs = 1000;

bool was_removed(const TakeResult& take) {
  return !take.parts.empty() && take.parts.back().was_removed;
}

const char* ended_by(const AudioSource& source, const TakeResult& take) {
  if (was_removed(take)) return "removed";
  if (take.error || !source.error().empty()) return "error";
  switch (take.end) {
    case TakeEnd::kSignal:
      return "signal";
    case TakeEnd::kKey:
      return "key";
    case TakeEnd::kDuration:
      return "duration";
    case TakeEnd::kHeld:
      return "error";
    default:
      return "input";
  }
}

// The parts under each other, and what they come to.
Json json_of_parts(const TakeResult& take) {
  SealedCapture sum;
  Json parts = Json::array();
  for (const PartResult& part : take.parts) {
    if (!part.sealed) continue;
    const SealedCapture& sealed = *part.sealed;
    sum.duration_ms += sealed.duration_ms;
    sum.bytes += sealed.bytes;
    sum.source_duration_ms += sealed.source_duration_ms;
    sum.dropped_append_bytes += sealed.dropped_append_bytes;
    sum.skipped_bytes = sealed.skipped_bytes;  // of the last, for all
    parts.push_back({{"path", sealed.path},
                     {"durationMs", sealed.duration_ms},
                     {"bytes", sealed.bytes},
                     {"sampleFrames", part.frames}});
  }
  Json json = json_of(sum);
  json.erase("path");
  json["parts"] = std::move(parts);
  return json;
}

void add_source(const AudioSource& source, Json* json) {
  const auto overruns = source.overruns();
  if (!overruns) return;
  (*json)["overruns"] = overruns->count;
  (*json)["overrunMs"] = (overruns->lost_us + kUsPerMs / 2) / kUsPerMs;
}

void add_kept(const KeptAudio& kept, Json* json) {
  (*json)["keptDurationMs"] = kept.duration_ms;
  (*json)["keptBytes"] = kept.bytes;
  (*json)["tornBytes"] = kept.torn_bytes;
}

Json json_of(const TakeOptions& options, const AudioSource& source,
             const TakeResult& take) {
  Json json = options.feed.part_frames ? json_of_parts(take)
                                       : json_of(*take.parts.back().sealed);
  json["sampleRate"] = source.format().sample_rate;
  json["channels"] = source.format().channels;
  json["bitRate"] = options.bit_rate;
  json["sampleFrames"] = take.frames;
  json["endedBy"] = ended_by(source, take);
  json["marks"] = take.marks;
  json["wallMs"] = take.wall_us / kUsPerMs;
  json["longestGapMs"] = take.longest_gap_us / kUsPerMs;
  json["flushes"] = take.flushes.count;
  json["longestFlushMs"] = take.flushes.longest_us / kUsPerMs;
  add_source(source, &json);
  if (options.kept) add_kept(*options.kept, &json);
  return json;
}

// What there is of the take all the same.
std::string consolation(const TakeResult& take) {
  std::string paths;
  std::string words;
  for (const PartResult& part : take.parts) {
    if (!part.sealed) continue;
    paths += (paths.empty() ? "" : ", ") + part.sealed->path;
    words += " " + shell_word(part.sealed->path);
  }
  return "the take itself is sealed in " + paths +
         "; get its figures with: corvane finalize" + words;
}

}  // namespace

bool print_figures(const TakeOptions& options, const AudioSource& source,
                   const TakeResult& take, Console* console) {
  return print_json(json_of(options, source, take), consolation(take), console);
}

}  // namespace corvane
