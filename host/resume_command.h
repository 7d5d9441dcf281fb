// `corvane resume`: goes on with an interrupted take.
#ifndef CORVANE_HOST_RESUME_COMMAND_H_
#define CORVANE_HOST_RESUME_COMMAND_H_

#include "console.h"
#include "log_output.h"
#include "take_arguments.h"

namespace corvane {

// Looks at the capture, says what it holds, and records on behind its last
// whole frame. What is no capture is left alone. Prints the figures of the
// whole capture as JSON on standard output, everything else on the console.
// Returns the exit status.
int run_resume(const TakeArguments& arguments, Console* console,
               LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_RESUME_COMMAND_H_
