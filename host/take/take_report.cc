#include "take/take_report.h"

#include <string>

#include "engine/plugin_reply.h"
#include "looks/capture_look.h"
#include "terminal/json_output.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kUsPerMs = 1000;

// AAC frames that a take may have beside its audio: the codec's priming and the
// last one's padding, and the same again for each restart of the codec.
constexpr int64_t kMostExtraFrames = 8;
constexpr int64_t kSamplesPerFrame = 1024;

const char* ended_by(const AudioSource& source, const TakeResult& take) {
  if (take.was_removed) return "removed";
  if (take.error || !source.error().empty()) return "error";
  return take.end == TakeEnd::kSignal ? "signal" : "input";
}

Json json_of(const TakeOptions& options, const AudioSource& source,
             const TakeResult& take) {
  Json json = json_of(*take.sealed);
  json["sampleRate"] = source.format().sample_rate;
  json["channels"] = source.format().channels;
  json["bitRate"] = options.bit_rate;
  json["sampleFrames"] = take.frames;
  json["endedBy"] = ended_by(source, take);
  json["wallMs"] = take.wall_us / kUsPerMs;
  json["longestGapMs"] = take.longest_gap_us / kUsPerMs;
  json["flushes"] = take.flushes.count;
  json["longestFlushMs"] = take.flushes.longest_us / kUsPerMs;
  if (options.kept) {
    json["keptDurationMs"] = options.kept->duration_ms;
    json["keptBytes"] = options.kept->bytes;
    json["tornBytes"] = options.kept->torn_bytes;
  }
  return json;
}

int64_t to_ms(int64_t samples, int sample_rate) {
  return samples * 1000 / sample_rate;
}

// Why the sealed figures can't be those of this take, as a clause. Of frames at
// two rates nothing can be said.
std::string disagreement(const TakeOptions& options, const AudioSource& source,
                         const TakeResult& take) {
  if (!take.sealed || take.error) return "";
  const int rate = source.format().sample_rate;
  if (options.kept && options.kept->sample_rate != 0 &&
      options.kept->sample_rate != rate) {
    return "";
  }
  const int64_t kept_ms = options.kept ? options.kept->duration_ms : 0;
  const int64_t least_ms = kept_ms + to_ms(take.frames, rate) - 1;
  const int64_t most_ms =
      least_ms + 2 + to_ms(kMostExtraFrames * kSamplesPerFrame, rate);
  const int64_t found_ms = take.sealed->duration_ms;
  if (found_ms >= least_ms && found_ms <= most_ms) return "";
  return "it holds " + clock_tenths(found_ms) +
         ", which can't be this take's " + clock_tenths(least_ms + 1) +
         ": another program has written to it; compare it with the "
         "files beside it before you go on";
}

// The command that goes on with the capture.
std::string resume_command(const TakeOptions& options,
                           const AudioSource& source) {
  return "corvane resume " + shell_word(options.capture_path) +
         (source.wait_fd() < 0 ? " -i REST" : " -i -");
}

// What is left of a take that failed, and how to go on.
void report_next_step(const TakeOptions& options, const AudioSource& source,
                      const TakeResult& take, const std::string& advice,
                      Console* console) {
  const std::string& path = options.capture_path;
  const std::string command =
      "continue it with: " + resume_command(options, source);
  if (take.sealed) {
    console->Complain(path + ": the capture is whole up to " +
                      clock_tenths(take.sealed->duration_ms) + " and sealed");
    console->Complain(advice.empty() ? command : advice + "; then " + command);
  } else if (take.started || options.kept) {
    const std::string next = next_step(path, command);
    if (!next.empty()) console->Complain(path + ": " + next);
  }
}

std::string advice_for(const PluginError& error, const TakeOptions& options,
                       const AudioSource& source, bool started) {
  return options.kept && !started && error.code == "WRITE_FAILED"
             ? way_to_change(error, options.capture_path)
             : way_out(error, options.capture_path, source);
}

// What there is at the path of a take that was begun and could not be sealed.
std::string what_is_left(const std::string& path) {
  const CaptureLook look = look_at_capture(path, true);
  if (look.is_missing) {
    return path +
           ": the file is not there any more; if it was moved, seal it where "
           "it is now: corvane finalize FILE";
  }
  if (look.error.empty() && look.scan.samples == 0) {
    return path + " holds no audio: not one frame could be written";
  }
  return path + " keeps what was recorded until then, but could not be sealed";
}

// The kernel tells of pages that it could not write once, and of the next sync
// that all is well.
std::string doubt_of(const PluginError& error) {
  return error.message.rfind("flush failed", 0) == 0
             ? "; what lies behind the last flush that succeeded may not be on "
               "the disk"
             : "";
}

// What the plugin's error means. The way out of a sealed take's goes to the
// sentence that says how to go on.
void report_failure(const TakeOptions& options, const AudioSource& source,
                    const TakeResult& take, const std::string& advice,
                    Console* console) {
  const PluginError& error = *take.error;
  const std::string subject =
      error.code == "UNSUPPORTED_FORMAT" ? source.name() : options.capture_path;
  const bool says_way_out = !take.sealed && !advice.empty();
  console->Complain(subject + ": " + error.message + doubt_of(error) +
                    (says_way_out ? "; " + advice : ""));
  tell_in_full(error, console);
  const bool is_elsewhere = !take.moved_to.empty() || !take.loss.empty();
  if (take.started && !take.sealed && !is_elsewhere &&
      error.code != "VERIFY_FAILED") {
    console->Complain(what_is_left(options.capture_path));
  }
}

// Why no take came about although nothing failed, as a sentence; empty when one
// did.
std::string why_nothing(const TakeOptions& options, const AudioSource& source,
                        const TakeResult& take) {
  const std::string& path = options.capture_path;
  if (take.holder) return path + ": " + held_by(*take.holder);
  if (take.started || take.error || !source.error().empty()) return "";
  return source.name() + ": " +
         (take.end == TakeEnd::kSignal ? "stopped before any audio came"
                                       : "no audio came") +
         "; " + path + " is as it was";
}

// Where the capture went, as a sentence; empty when it stayed.
std::string whereabouts(const TakeOptions& options, const TakeResult& take) {
  const std::string& path = options.capture_path;
  if (!take.loss.empty() && !take.was_removed) {
    return path + ": it was moved while it was written, and " + take.loss +
           "; seal it where it is now: corvane finalize FILE";
  }
  if (!take.loss.empty()) {
    return path +
           ": it was removed while it was written, and what was recorded could "
           "not be saved: " +
           take.loss;
  }
  if (take.moved_to.empty()) return "";
  return path +
         (take.was_removed
              ? ": it was removed while it was written; what was recorded is "
                "saved in "
              : ": it was moved while it was written; the take is in ") +
         take.moved_to;
}

// What went wrong without the plugin; returns whether anything did.
bool report_circumstances(const TakeOptions& options, const AudioSource& source,
                          const TakeResult& take, Console* console) {
  const std::string input_error = source.error();
  const std::string disagrees = disagreement(options, source, take);
  const std::string sentences[] = {
      input_error.empty() ? "" : source.name() + ": " + input_error,
      why_nothing(options, source, take),
      whereabouts(options, take),
      disagrees.empty() ? "" : take.sealed->path + ": " + disagrees,
  };
  bool said = false;
  for (const std::string& sentence : sentences) {
    if (sentence.empty()) continue;
    console->Complain(sentence);
    said = true;
  }
  return said;
}

}  // namespace

bool report_problems(const TakeOptions& options, const AudioSource& source,
                     const TakeResult& take, Console* console) {
  if (take.leftover_bytes > 0) {
    console->Complain(source.name() + ": it ended inside a sample frame, and " +
                      std::to_string(take.leftover_bytes) +
                      " byte(s) were left out; check that it is s16le with "
                      "the channels that -c says");
  }
  const bool odd = report_circumstances(options, source, take, console);
  if (!take.error && source.error().empty()) return odd;
  const std::string advice =
      take.error ? advice_for(*take.error, options, source, take.started) : "";
  if (take.error) report_failure(options, source, take, advice, console);
  if (take.moved_to.empty() && take.loss.empty()) {
    report_next_step(options, source, take, advice, console);
  }
  return true;
}

bool print_figures(const TakeOptions& options, const AudioSource& source,
                   const TakeResult& take, Console* console) {
  return print_json(json_of(options, source, take),
                    "the take itself is sealed in " + take.sealed->path +
                        "; get its figures with: corvane finalize " +
                        shell_word(take.sealed->path),
                    console);
}

}  // namespace corvane
