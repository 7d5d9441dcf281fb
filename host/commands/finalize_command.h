// `corvane finalize`: seals captures that were left behind.
#ifndef CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
#define CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_

#include <string>
#include <vector>

#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

// Seals and verifies the capture at each of `paths`, and prints its figures as
// a line of JSON on standard output, everything else on the console. What is no
// capture is left alone. A failure keeps none of the others from being sealed;
// the exit status that is returned tells of it.
int run_finalize(const std::vector<std::string>& paths, Console* console,
                 LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_FINALIZE_COMMAND_H_
