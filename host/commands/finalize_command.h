// `corvane finalize`: seals captures that were left behind.
#ifndef CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
#define CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_

#include <string>
#include <vector>

#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

struct FinalizeArguments {
  std::vector<std::string> paths;
  bool force = false;  // they are captures, whatever the look has against it
};

// Seals and verifies the capture at each of the paths, and prints its figures
// as a line of JSON on standard output, everything else on the console. What is
// no capture is left alone; with --force, only what holds no frame is. A
// failure keeps none of the others from being sealed; the exit status that is
// returned tells of it.
int run_finalize(const FinalizeArguments& arguments, Console* console,
                 LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
