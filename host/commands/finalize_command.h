// `corvane finalize`: seals a capture that was left behind.
#ifndef CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
#define CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_

#include <string>

#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

// Seals and verifies the capture at `path`, and prints its figures as JSON on
// standard output, everything else on the console. What is no capture is left
// alone. Returns the exit status.
int run_finalize(const std::string& path, Console* console, LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
