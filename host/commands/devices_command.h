// `corvane devices`: what can be recorded from.
#ifndef CORVANE_HOST_COMMANDS_DEVICES_COMMAND_H_
#define CORVANE_HOST_COMMANDS_DEVICES_COMMAND_H_

#include "terminal/console.h"

namespace corvane {

// Prints the devices on standard output, one a line, or with `as_json` as one
// array. Returns the exit status; having none is no failure.
int run_devices(bool as_json, Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_DEVICES_COMMAND_H_
