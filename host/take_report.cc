#include "take_report.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "plugin_reply.h"
#include "way_out.h"

namespace corvane {
namespace {

// What the plugin takes when it is not told.
constexpr int64_t kDefaultBitRate = 64000;

// "input" for the source's end.
const char* ended_by(const AudioSource& source, const TakeResult& take) {
  if (take.error || !source.error().empty()) return "error";
  return take.stopped ? "signal" : "input";
}

std::string json_of(const TakeOptions& options, const AudioSource& source,
                    const TakeResult& take) {
  nlohmann::ordered_json json;
  json["path"] = take.sealed->path;
  json["durationMs"] = take.sealed->duration_ms;
  json["bytes"] = take.sealed->bytes;
  json["sourceDurationMs"] = take.sealed->source_duration_ms;
  json["droppedAppendBytes"] = take.sealed->dropped_append_bytes;
  json["sampleRate"] = source.format().sample_rate;
  json["channels"] = source.format().channels;
  json["bitRate"] = options.bit_rate.value_or(kDefaultBitRate);
  json["sampleFrames"] = take.frames;
  json["endedBy"] = ended_by(source, take);
  // A path may be any bytes; JSON is UTF-8.
  return json.dump(-1, ' ', false,
                   nlohmann::ordered_json::error_handler_t::replace);
}

// What the plugin's error means, in full, and what is left of the take.
void report_failure(const TakeOptions& options, const AudioSource& source,
                    const TakeResult& take, Console* console) {
  const PluginError& error = *take.error;
  const std::string subject =
      error.code == "UNSUPPORTED_FORMAT" ? source.name() : options.capture_path;
  const std::string advice = way_out(error, options.capture_path, source);
  console->Complain(subject + ": " + error.message +
                    (advice.empty() ? "" : "; " + advice));
  console->Complain("the plugin's error: " + describe(error));
  if (take.sealed) {
    console->Complain(options.capture_path + " keeps the " +
                      std::to_string(take.sealed->duration_ms) +
                      " ms recorded until then, sealed");
  } else if (take.started && error.code != "VERIFY_FAILED") {
    console->Complain(options.capture_path +
                      " keeps what was recorded until then, but could not "
                      "be sealed");
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
  return take.error || !input_error.empty();
}

bool print_figures(const TakeOptions& options, const AudioSource& source,
                   const TakeResult& take, Console* console) {
  const std::string json = json_of(options, source, take);
  if (std::printf("%s\n", json.c_str()) >= 0 && std::fflush(stdout) == 0) {
    return true;
  }
  const std::string reason = std::strerror(errno);
  console->Complain(
      "the result could not be written to standard output: " + reason +
      "; the take itself is sealed in " + options.capture_path);
  return false;
}

}  // namespace corvane
