#include "commands/resume_command.h"

#include <string>

#include "looks/capture_look.h"
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

std::string found(const CaptureLook& look) {
  if (look.size == 0) return "the file is empty; the take begins with it";
  std::string text =
      "found " + counted(look.frames(), "whole AAC frame") + ", " +
      clock_tenths(look.scan.DurationMs()) + " of audio; " +
      (look.torn_bytes() > 0
           ? counted(look.torn_bytes(), "torn byte") + " will be cut off"
           : "nothing is torn");
  if (look.scan.skipped_bytes > 0) {
    text += "; " + counted(look.scan.skipped_bytes, "foreign byte") +
            " between the frames will stay";
  }
  return text;
}

// The last frame's rate counts too: a file may have been resumed before.
bool is_same_format(const CaptureLook& look, const PcmFormat& format) {
  return look.format->sample_rate == format.sample_rate &&
         look.format->channels == format.channels &&
         look.scan.sample_rate == format.sample_rate;
}

void warn_of_other_format(const std::string& path, const CaptureLook& look,
                          const PcmFormat& format, Console* console) {
  if (!look.format || is_same_format(look, format)) return;
  std::string old = channels_at(*look.format);
  if (look.scan.sample_rate != look.format->sample_rate) {
    old += " (the last at " + std::to_string(look.scan.sample_rate) + " Hz)";
  }
  console->Complain(path + ": warning: its frames are " + old +
                    ", the new audio is " + channels_at(format) +
                    "; many players go by the first frame alone, and the "
                    "duration will be computed with the last one's rate");
}

KeptAudio kept_audio(const CaptureLook& look) {
  return {look.scan.DurationMs(), look.scan.stream_end, look.torn_bytes()};
}

}  // namespace

int run_resume(const TakeArguments& arguments, Console* console,
               LogOutput* log) {
  int status = kExitDone;
  const auto source = open_source(arguments, console, &status);
  if (source == nullptr) return status;
  const std::string& path = arguments.output;
  CaptureLook look;
  {
    const WaitingLine waiting(console, "looking at the capture");
    look = look_at_capture(path);
  }
  if (!look.error.empty()) {
    complain(path, look, console);
    return kExitFailed;
  }
  console->Complain(path + ": " + found(look));
  warn_of_other_format(path, look, source->format(), console);
  TakeOptions options = take_options_of(arguments);
  options.kept = kept_audio(look);
  return run_take(options, source.get(), console, log);
}

}  // namespace corvane
