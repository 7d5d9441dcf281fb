#include "take/take_report.h"

#include <string>

#include "engine/plugin_reply.h"
#include "looks/capture_look.h"
#include "terminal/json_output.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

// What the plugin takes when it is not told.
constexpr int64_t kDefaultBitRate = 64000;

// "input" for the source's end.
const char* ended_by(const AudioSource& source, const TakeResult& take) {
  if (take.error || !source.error().empty()) return "error";
  return take.stopped ? "signal" : "input";
}

Json json_of(const TakeOptions& options, const AudioSource& source,
             const TakeResult& take) {
  Json json = json_of(*take.sealed);
  json["sampleRate"] = source.format().sample_rate;
  json["channels"] = source.format().channels;
  json["bitRate"] = options.bit_rate.value_or(kDefaultBitRate);
  json["sampleFrames"] = take.frames;
  json["endedBy"] = ended_by(source, take);
  if (options.kept) {
    json["keptDurationMs"] = options.kept->duration_ms;
    json["keptBytes"] = options.kept->bytes;
    json["tornBytes"] = options.kept->torn_bytes;
  }
  return json;
}

// The command that goes on with the capture.
std::string resume_command(const TakeOptions& options,
                           const AudioSource& source) {
  const PcmFormat format = source.format();
  const std::string input = source.wait_fd() < 0
                                ? " -i REST"
                                : " -r " + std::to_string(format.sample_rate) +
                                      " -c " + std::to_string(format.channels);
  return "corvane resume " + shell_word(options.capture_path) + input;
}

// What is left of a take that failed, and how to go on.
void report_next_step(const TakeOptions& options, const AudioSource& source,
                      const TakeResult& take, Console* console) {
  const std::string& path = options.capture_path;
  const std::string command = resume_command(options, source);
  std::string next;
  if (take.sealed) {
    next = "the capture is whole up to " +
           clock_tenths(take.sealed->duration_ms) +
           " and sealed; continue it with: " + command;
  } else if (take.started || options.kept) {
    next = next_step(path, "continue it with: " + command);
  }
  if (!next.empty()) console->Complain(path + ": " + next);
}

std::string advice_for(const PluginError& error, const TakeOptions& options,
                       const AudioSource& source, bool started) {
  return options.kept && !started && error.code == "WRITE_FAILED"
             ? way_to_change(error, options.capture_path)
             : way_out(error, options.capture_path, source);
}

// What there is at the path of a take that was begun and could not be sealed.
std::string what_is_left(const std::string& path) {
  const CaptureLook look = look_at_capture(path);
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

// What the plugin's error means, in full.
void report_failure(const TakeOptions& options, const AudioSource& source,
                    const TakeResult& take, Console* console) {
  const PluginError& error = *take.error;
  const std::string subject =
      error.code == "UNSUPPORTED_FORMAT" ? source.name() : options.capture_path;
  const std::string advice = advice_for(error, options, source, take.started);
  console->Complain(subject + ": " + error.message +
                    (advice.empty() ? "" : "; " + advice));
  console->Complain("the plugin's error: " + describe(error));
  if (take.started && !take.sealed && error.code != "VERIFY_FAILED") {
    console->Complain(what_is_left(options.capture_path));
  }
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
  const std::string input_error = source.error();
  if (!input_error.empty()) {
    console->Complain(source.name() + ": " + input_error);
  }
  if (take.error) report_failure(options, source, take, console);
  const bool failed = take.error || !input_error.empty();
  if (failed) report_next_step(options, source, take, console);
  return failed;
}

bool print_figures(const TakeOptions& options, const AudioSource& source,
                   const TakeResult& take, Console* console) {
  return print_json(json_of(options, source, take),
                    "the take itself is sealed in " + options.capture_path +
                        "; get its figures with: corvane finalize " +
                        shell_word(options.capture_path),
                    console);
}

}  // namespace corvane
