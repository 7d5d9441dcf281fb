#include "commands/take_usage.h"

#include <sys/stat.h>
#include <unistd.h>

namespace corvane {
namespace {

bool is_nothing(const struct stat& input) {
  struct stat nothing = {};
  return S_ISCHR(input.st_mode) && stat("/dev/null", &nothing) == 0 &&
         input.st_rdev == nothing.st_rdev;
}

// What somebody may have meant as sound; empty for a terminal and for nothing.
std::string sound_on_standard_input() {
  struct stat input = {};
  if (isatty(STDIN_FILENO) == 1 || fstat(STDIN_FILENO, &input) != 0 ||
      is_nothing(input)) {
    return "";
  }
  if (S_ISFIFO(input.st_mode)) return "a pipe";
  if (S_ISSOCK(input.st_mode)) return "a socket";
  return S_ISREG(input.st_mode) ? "a file" : "a device";
}

std::string objection_to_device(const TakeArguments& arguments) {
  if (arguments.raw) {
    return "--raw is for samples on standard input, which are asked for with "
           "-i -";
  }
  if (arguments.realtime) {
    return "--realtime is for files; a microphone keeps its own time";
  }
  if (arguments.device) return "";
  const std::string found = sound_on_standard_input();
  if (found.empty()) return "";
  return "standard input is " + found +
         "; say -i - for raw sound from it, or -D default for the microphone";
}

std::string objection_to_raw(const TakeArguments& arguments, bool has_capture) {
  if (!has_capture && (arguments.sample_rate == 0 || arguments.channels == 0)) {
    return "raw audio on standard input needs its rate and channels, "
           "as in -r 48000 -c 1; a file is named with -i";
  }
  if (isatty(STDIN_FILENO) == 1) {
    return "standard input is a terminal; pipe raw s16le audio in, name a "
           "file with -i, or leave -i out for the microphone";
  }
  return "";
}

}  // namespace

std::string objection_to_usage(const TakeArguments& arguments,
                               bool has_capture) {
  if (arguments.input.empty()) return objection_to_device(arguments);
  if (arguments.device) {
    return "-D is for a device, -i for a file or standard input; leave one of "
           "them out";
  }
  if (arguments.input == "-") return objection_to_raw(arguments, has_capture);
  return arguments.raw
             ? "--raw is for samples on standard input; leave it out, or pipe "
               "the file in instead of naming it with -i"
             : "";
}

}  // namespace corvane
