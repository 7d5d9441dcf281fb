#include "commands/resume_command.h"

#include <optional>
#include <string>
#include <utility>

#include "looks/capture_look.h"
#include "looks/findings.h"
#include "take/run_take.h"
#include "terminal/exit_status.h"
#include "terminal/waiting_line.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

// Why the capture cannot be gone on with, and what can be done instead.
void complain(const std::string& path, const CaptureLook& look,
              Console* console) {
  const std::string advice =
      look.is_missing
          ? "; check the name, or begin a take there with: corvane record"
          : "";
  console->Complain(path + ": " + look.error + advice);
}

std::string found_in(const CaptureLook& look) {
  if (look.size == 0) return "the file is empty; the take begins with it";
  return found(findings_of(look), true);
}

// The last frame's rate counts too: a file may have been resumed before.
bool is_same_format(const CaptureLook& look, const PcmFormat& format) {
  return look.format->sample_rate == format.sample_rate &&
         look.format->channels == format.channels &&
         look.scan.sample_rate == format.sample_rate;
}

// Why the new audio doesn't belong behind the old, as a sentence; empty when it
// does.
std::string objection_to_mixture(const std::string& path,
                                 const CaptureLook& look,
                                 const PcmFormat& format) {
  if (!look.format || is_same_format(look, format)) return "";
  std::string old = channels_at(*look.format);
  if (look.scan.sample_rate != look.format->sample_rate) {
    old += " (the last at " + std::to_string(look.scan.sample_rate) + " Hz)";
  }
  return path + ": its frames are " + old + ", the new audio is " +
         channels_at(format) +
         "; many players go by the first frame alone, and the duration would "
         "be computed with the last one's rate";
}

KeptAudio kept_audio(const CaptureLook& look) {
  return {look.scan.DurationMs(), look.scan.stream_end, look.torn_bytes(),
          look.scan.sample_rate};
}

bool is_file(const TakeArguments& arguments) {
  return !arguments.input.empty() && arguments.input != "-";
}

// Raw PCM says nothing of itself, and a device is asked for it: what -r and -c
// leave open is the capture's.
TakeArguments completed(TakeArguments arguments, const CaptureLook& look) {
  if (is_file(arguments) || !look.format) return arguments;
  if (arguments.sample_rate == 0) {
    arguments.sample_rate = look.format->sample_rate;
  }
  if (arguments.channels == 0) arguments.channels = look.format->channels;
  return arguments;
}

bool is_format_open(const TakeArguments& arguments) {
  return arguments.input == "-" &&
         (arguments.sample_rate == 0 || arguments.channels == 0);
}

// The first objection that is not overridden ends it.
bool may_go_on(const TakeArguments& arguments, const CaptureLook& look,
               const AudioSource& source, Console* console) {
  const PcmFormat format = source.format();
  const std::string useless = objection_to_use(arguments, format);
  const std::string objections[] = {
      objection_to_mixture(arguments.output, look, format),
      useless.empty() ? "" : source.name() + ": " + useless};
  for (const std::string& objection : objections) {
    if (!objection.empty() && !is_overridden(arguments, objection, console)) {
      return false;
    }
  }
  return true;
}

// Nothing when it can't be gone on with, which has then been said.
std::optional<CaptureLook> look_and_tell(const TakeArguments& arguments,
                                         Console* console) {
  const std::string& path = arguments.output;
  CaptureLook look;
  {
    const WaitingLine waiting(console, "looking at the capture");
    look = look_at_capture(path, arguments.force);
  }
  if (!look.error.empty()) {
    complain(path, look, console);
    return std::nullopt;
  }
  if (!is_taken(path, look.objection, arguments.force, console)) {
    return std::nullopt;
  }
  console->Note(path + ": " + found_in(look));
  return look;
}

}  // namespace

int run_resume(const TakeArguments& given, Console* console, LogOutput* log) {
  const std::string& path = given.output;
  CaptureLock lock;
  if (const auto holder = lock.Take(path)) {
    console->Complain(path + ": " + held_by(*holder));
    return kExitFailed;
  }
  const auto look = look_and_tell(given, console);
  if (!look) return kExitFailed;
  const TakeArguments arguments = completed(given, *look);
  if (is_format_open(arguments)) {
    console->Complain(path +
                      ": it doesn't tell the rate and channels of raw audio; "
                      "name them, as in -r 48000 -c 1");
    return kExitUsage;
  }
  int status = kExitDone;
  const auto source = open_source(arguments, console, &status);
  if (source == nullptr) return status;
  if (!may_go_on(arguments, *look, *source, console)) return kExitUsage;
  TakeOptions options = take_options_of(arguments, source->format());
  options.kept = kept_audio(*look);
  return run_take(options, source.get(), std::move(lock), console, log);
}

}  // namespace corvane
