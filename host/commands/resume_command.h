// `corvane resume`: goes on with an interrupted take.
#ifndef CORVANE_HOST_COMMANDS_RESUME_COMMAND_H_
#define CORVANE_HOST_COMMANDS_RESUME_COMMAND_H_

#include "take/take_arguments.h"
#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

// Looks at the capture, says what it holds, and records on behind its last
// whole frame. What is no capture is left alone. Prints the figures of the
// whole capture as JSON on standard output, everything else on the console.
// Returns the exit status.
int run_resume(const TakeArguments& arguments, Console* console,
               LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_RESUME_COMMAND_H_
