// Where a take's audio is to come from, by the options and by what standard
// input is.
#ifndef CORVANE_HOST_COMMANDS_TAKE_USAGE_H_
#define CORVANE_HOST_COMMANDS_TAKE_USAGE_H_

#include <string>

#include "take/take_arguments.h"

namespace corvane {

// What the options alone tell to be wrong, as a sentence; empty when nothing
// is. A take that goes on has a capture that knows its format.
std::string objection_to_usage(const TakeArguments& arguments,
                               bool has_capture);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_TAKE_USAGE_H_
