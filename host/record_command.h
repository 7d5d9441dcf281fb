// `corvane record`: a new take.
#ifndef CORVANE_HOST_RECORD_COMMAND_H_
#define CORVANE_HOST_RECORD_COMMAND_H_

#include "console.h"
#include "log_output.h"
#include "take_arguments.h"

namespace corvane {

// Records a take and prints its figures as JSON on standard output, everything
// else on the console. Returns the exit status.
int run_record(const TakeArguments& arguments, Console* console,
               LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_RECORD_COMMAND_H_
