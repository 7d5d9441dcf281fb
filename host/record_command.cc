#include "record_command.h"

#include <sys/stat.h>

#include "exit_status.h"
#include "run_take.h"

namespace corvane {
namespace {

// A folder at the capture path would be moved aside like audio.
bool is_folder(const std::string& path) {
  struct stat file = {};
  return stat(path.c_str(), &file) == 0 && S_ISDIR(file.st_mode);
}

}  // namespace

int run_record(const TakeArguments& arguments, Console* console,
               LogOutput* log) {
  int status = kExitDone;
  const auto source = open_source(arguments, console, &status);
  if (source == nullptr) return status;
  if (is_folder(arguments.output)) {
    console->Complain(arguments.output + " is a folder; name a file in it");
    return kExitFailed;
  }
  return run_take(take_options_of(arguments), source.get(), console, log);
}

}  // namespace corvane
