#include "commands/record_command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "take/run_take.h"
#include "terminal/exit_status.h"

namespace corvane {
namespace {

// Standard output, as where a shell sends it to the capture itself.
bool is_result(const struct stat& file) {
  struct stat output = {};
  return fstat(STDOUT_FILENO, &output) == 0 && output.st_dev == file.st_dev &&
         output.st_ino == file.st_ino;
}

// Why there can be no capture at `path`; empty if there can. A folder would be
// moved aside like audio, and a pipe nobody reads holds up even the last write.
std::string objection_to(const std::string& path) {
  struct stat file = {};
  if (stat(path.c_str(), &file) != 0) return "";
  if (S_ISDIR(file.st_mode)) return " is a folder; name a file in it";
  if (S_ISFIFO(file.st_mode))
    return " is a pipe, which keeps nothing; name a file";
  if (!S_ISREG(file.st_mode))
    return " is a device or a socket, which keeps nothing; name a file";
  if (is_result(file)) return " is where the result goes; name another file";
  return "";
}

}  // namespace

int run_record(const TakeArguments& arguments, Console* console,
               LogOutput* log) {
  int status = kExitDone;
  const auto source = open_source(arguments, console, &status);
  if (source == nullptr) return status;
  const std::string first_path = arguments.split_us > 0
                                     ? part_path(arguments.output, 1)
                                     : arguments.output;
  const std::string objection = objection_to(first_path);
  if (!objection.empty()) {
    console->Complain(first_path + objection);
    return kExitFailed;
  }
  const std::string format_objection =
      objection_to_use(arguments, source->format());
  if (!format_objection.empty() &&
      !is_overridden(arguments, source->name() + ": " + format_objection,
                     console)) {
    return kExitUsage;
  }
  return run_take(take_options_of(arguments, source->format()), source.get(),
                  CaptureLock(), console, log);
}

}  // namespace corvane
