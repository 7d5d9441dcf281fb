#include "take/take_report.h"

#include <unistd.h>

#include <string>
#include <vector>

#include "engine/plugin_reply.h"
#include "looks/capture_look.h"
#include "take/take_arguments.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

// AAC frames that a take may have beside its audio: the codec's priming and the
// last one's padding, and the same again for each restart of the codec.
constexpr int64_t kMostExtraFrames = 8;
constexpr int64_t kMostExtraFramesOfPause = 3;
constexpr int64_t kTellableGapUs = 2'000'000;
constexpr int64_t kSamplesPerFrame = 1024;

bool is_last_sealed(const TakeResult& take) {
  return !take.parts.empty() && take.parts.back().sealed;
}

// Where the take was being written when it ended.
std::string last_path(const TakeOptions& options, const TakeResult& take) {
  return take.parts.empty() ? options.capture_path : take.parts.back().path;
}

bool has_wandered(const TakeResult& take) {
  return !take.parts.empty() && (!take.parts.back().moved_to.empty() ||
                                 !take.parts.back().loss.empty());
}

int64_t to_ms(int64_t samples, int sample_rate) {
  return samples * 1000 / sample_rate;
}

// Why the sealed figures can't be those of this part, as a clause. Of frames at
// two rates nothing can be said.
std::string disagreement(const TakeOptions& options, const AudioSource& source,
                         const TakeResult& take, const PartResult& part) {
  if (!part.sealed || take.error) return "";
  const int rate = source.format().sample_rate;
  if (options.kept && options.kept->sample_rate != 0 &&
      options.kept->sample_rate != rate) {
    return "";
  }
  const int64_t kept_ms = options.kept ? options.kept->duration_ms : 0;
  const int64_t least_ms = kept_ms + to_ms(part.frames, rate) - 1;
  const int64_t extra_frames =
      kMostExtraFrames + kMostExtraFramesOfPause * take.pauses;
  const int64_t most_ms =
      least_ms + 2 + to_ms(extra_frames * kSamplesPerFrame, rate);
  const int64_t found_ms = part.sealed->duration_ms;
  if (found_ms >= least_ms && found_ms <= most_ms) return "";
  return "it holds " + clock_tenths(found_ms) +
         ", which can't be this take's " + clock_tenths(least_ms + 1) +
         ": another program has written to it; compare it with the "
         "files beside it before you go on";
}

// The command that goes on with the capture.
std::string resume_command(const std::string& path, const AudioSource& source,
                           int64_t bit_rate) {
  std::string words = "corvane resume " + shell_word(path);
  const std::string input = source.how_to_continue();
  if (!input.empty()) words += " " + input;
  if (bit_rate != bit_rate_of({}, source.format().channels)) {
    words += " -b " + std::to_string(bit_rate);
  }
  return words;
}

// What is left of a take that failed, and how to go on.
void report_next_step(const TakeOptions& options, const AudioSource& source,
                      const TakeResult& take, const std::string& advice,
                      Console* console) {
  const std::string path = last_path(options, take);
  const std::string command =
      "continue it with: " + resume_command(path, source, options.bit_rate);
  if (is_last_sealed(take)) {
    console->Complain(path + ": the capture is whole up to " +
                      clock_tenths(take.parts.back().sealed->duration_ms) +
                      " and sealed");
    console->Complain(advice.empty() ? command : advice + "; then " + command);
  } else if (take.has_started() || options.kept) {
    const std::string next = next_step(path, command);
    if (!next.empty()) console->Complain(path + ": " + next);
  }
}

std::string advice_for(const PluginError& error, const TakeOptions& options,
                       const AudioSource& source, const TakeResult& take) {
  const std::string path = last_path(options, take);
  return options.kept && !take.has_started() && error.code == "WRITE_FAILED"
             ? way_to_change(error, path)
             : way_out(error, path, source);
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
  const std::string path = last_path(options, take);
  const std::string subject =
      error.code == "UNSUPPORTED_FORMAT" ? source.name() : path;
  const bool says_way_out = !is_last_sealed(take) && !advice.empty();
  console->Complain(subject + ": " + error.message + doubt_of(error) +
                    (says_way_out ? "; " + advice : ""));
  tell_in_full(error, console);
  if (take.has_started() && !is_last_sealed(take) && !has_wandered(take) &&
      error.code != "VERIFY_FAILED") {
    console->Complain(what_is_left(path));
  }
}

// Why no take came about although nothing failed, as a sentence; empty when one
// did.
std::string why_nothing(const TakeOptions& options, const AudioSource& source,
                        const TakeResult& take) {
  const std::string path = last_path(options, take);
  if (!take.parts.empty() && take.parts.back().holder) {
    return path + ": " + held_by(*take.parts.back().holder);
  }
  if (take.has_started() || take.error || !source.error().empty()) return "";
  return source.name() + ": " +
         (take.end == TakeEnd::kInput ? "no audio came"
                                      : "stopped before any audio came") +
         "; " + path + " is as it was";
}

// Where the capture went, as a sentence; empty when it stayed.
std::string whereabouts(const PartResult& part) {
  const std::string& path = part.path;
  if (!part.loss.empty() && !part.was_removed) {
    return path + ": it was moved while it was written, and " + part.loss +
           "; seal it where it is now: corvane finalize FILE";
  }
  if (!part.loss.empty()) {
    return path +
           ": it was removed while it was written, and what was recorded could "
           "not be saved: " +
           part.loss;
  }
  if (part.moved_to.empty()) return "";
  return path +
         (part.was_removed
              ? ": it was removed while it was written; what was recorded is "
                "saved in "
              : ": it was moved while it was written; the take is in ") +
         part.moved_to;
}

// What is no failure, and yet not as one would think.
void warn(const TakeOptions& options, const AudioSource& source,
          const TakeResult& take, Console* console) {
  if (take.leftover_bytes > 0) {
    console->Complain(source.name() + ": it ended inside a sample frame, and " +
                      std::to_string(take.leftover_bytes) +
                      " byte(s) were left out; check that it is s16le with "
                      "the channels that -c says");
  }
  if (take.last_gap_us >= kTellableGapUs && source.wait_fd() >= 0) {
    console->Complain(source.name() + ": warning: nothing came for the last " +
                      clock_tenths(take.last_gap_us / 1000) + " of the take");
  }
  if (take.missed_splits > 0) {
    console->Complain(last_path(options, take) +
                      ": warning: it is longer than it was to be, for no other "
                      "file could be made in its folder");
  }
  if (take.has_started() && access(take.next_path.c_str(), F_OK) == 0) {
    console->Complain(take.next_path +
                      ": warning: it is there from an earlier take, and none "
                      "of this one's parts");
  }
}

// What went wrong without the plugin; returns whether anything did.
bool report_circumstances(const TakeOptions& options, const AudioSource& source,
                          const TakeResult& take, Console* console) {
  const std::string input_error = source.error();
  std::vector<std::string> sentences = {
      input_error.empty() ? "" : source.name() + ": " + input_error,
      why_nothing(options, source, take)};
  for (const PartResult& part : take.parts) {
    sentences.push_back(whereabouts(part));
    const std::string clause = disagreement(options, source, take, part);
    sentences.push_back(clause.empty() ? ""
                                       : part.sealed->path + ": " + clause);
  }
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
  warn(options, source, take, console);
  const bool odd = report_circumstances(options, source, take, console);
  if (!take.error && source.error().empty()) return odd;
  const std::string advice =
      take.error ? advice_for(*take.error, options, source, take) : "";
  if (take.error) report_failure(options, source, take, advice, console);
  if (!has_wandered(take)) {
    report_next_step(options, source, take, advice, console);
  }
  return true;
}

}  // namespace corvane
