// `corvane record`: a new take.
#ifndef CORVANE_HOST_COMMANDS_RECORD_COMMAND_H_
#define CORVANE_HOST_COMMANDS_RECORD_COMMAND_H_

#include "take/take_arguments.h"
#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

// Records a take and prints its figures as JSON on standard output, everything
// else on the console. Returns the exit status.
int run_record(const TakeArguments& arguments, Console* console,
               LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_RECORD_COMMAND_H_
