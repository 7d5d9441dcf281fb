#include "commands/finalize_command.h"

#include <adts/stream_config.h>

#include <optional>

#include "looks/capture_look.h"
#include "looks/findings.h"
#include "take/capture_lock.h"
#include "take/plugin_call.h"
#include "terminal/exit_status.h"
#include "terminal/json_output.h"
#include "terminal/waiting_line.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

// What is known of the file before it is sealed.
struct Before {
  std::string error;      // why it is no capture, as a clause
  std::string objection;  // why it is hardly one
  int64_t size = 0;       // bytes
  PcmFormat format;       // of its first whole frame
};

Before look_before(const std::string& path, bool force) {
  Before before;
  const RegularFile file(path);
  before.size = file.size();
  before.error = objection_to_file(file);
  if (!before.error.empty()) return before;
  before.objection = objection_by_start(file);
  if (!before.objection.empty() && !force) return before;
  if (const auto first = first_whole_frame(file)) {
    before.format = first->format;
    if (before.objection.empty()) {
      before.objection = objection_by_evidence(file);
    }
  } else {
    before.error = left_without_frame(file);
  }
  return before;
}

// The method demands a rate and channels, checks them, and seals by what the
// frames say: a frame may be whole and yet name channels that it refuses.
PluginAnswer seal(const std::string& path, const PcmFormat& format,
                  LogOutput* log) {
  const int channels =
      adts::IsChannelConfig(format.channels) ? format.channels : 1;
  g_autoptr(FlValue) args = fl_value_new_map();
  fl_value_set_string_take(args, "capturePath",
                           fl_value_new_string(path.c_str()));
  fl_value_set_string_take(args, "outputPath",
                           fl_value_new_string(path.c_str()));
  fl_value_set_string_take(args, "sampleRate",
                           fl_value_new_int(format.sample_rate));
  fl_value_set_string_take(args, "channels", fl_value_new_int(channels));
  return ask_plugin("finalizePath", args, log);
}

void report_failure(const std::string& path, const PluginError& error,
                    Console* console) {
  const std::string advice = way_to_change(error, path);
  console->Complain(path + ": " + error.message +
                    (advice.empty() ? "" : "; " + advice));
  tell_in_full(error, console);
  const std::string next = next_step(
      path, "seal it again with: corvane finalize " + shell_word(path));
  if (!next.empty()) console->Complain(path + ": " + next);
}

// What lies behind the last frame is not in the answer.
std::string found_in(const Before& before, const SealedCapture& sealed) {
  Findings findings;
  findings.duration_ms = sealed.duration_ms;
  findings.torn_bytes = before.size - sealed.bytes;
  findings.foreign_between = sealed.skipped_bytes.value_or(0);
  return found(findings, false);
}

bool print_figures(const Before& before, const SealedCapture& sealed,
                   Console* console) {
  Json json = json_of(sealed);
  json["sampleRate"] = before.format.sample_rate;
  json["channels"] = nullptr;
  if (before.format.channels > 0) json["channels"] = before.format.channels;
  json["tornBytes"] = before.size - sealed.bytes;
  return print_json(json, "the capture itself is sealed in " + sealed.path,
                    console);
}

// Returns whether it was done, figures and all.
bool finalize(const std::string& path, bool force, Console* console,
              LogOutput* log) {
  CaptureLock lock;
  if (const auto holder = lock.Take(path)) {
    console->Complain(path + ": " + held_by(*holder));
    return false;
  }
  Before before;
  PluginAnswer answer;
  {
    const WaitingLine waiting(console, "sealing the capture");
    before = look_before(path, force);
    if (before.error.empty() &&
        is_taken(path, before.objection, force, console)) {
      answer = seal(path, before.format, log);
    }
  }
  if (!before.error.empty()) {
    console->Complain(path + ": " + before.error);
    return false;
  }
  if (answer.error) {
    report_failure(path, *answer.error, console);
    return false;
  }
  if (!answer.sealed) return false;
  console->Note(path + ": " + found_in(before, *answer.sealed));
  return print_figures(before, *answer.sealed, console);
}

}  // namespace

int run_finalize(const FinalizeArguments& arguments, Console* console,
                 LogOutput* log) {
  int status = kExitDone;
  for (const std::string& path : arguments.paths) {
    if (!finalize(path, arguments.force, console, log)) status = kExitFailed;
  }
  return status;
}

}  // namespace corvane
