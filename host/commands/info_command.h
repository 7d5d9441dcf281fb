// `corvane info`: what files hold; none of them is changed.
#ifndef CORVANE_HOST_COMMANDS_INFO_COMMAND_H_
#define CORVANE_HOST_COMMANDS_INFO_COMMAND_H_

#include <string>
#include <vector>

#include "terminal/console.h"

namespace corvane {

struct InfoArguments {
  std::vector<std::string> paths;
  bool json = false;  // an object a file, one a line, instead of a table
};

// Prints what each capture holds on standard output, and on the console why a
// file is none. A file that is none keeps none of the others from being looked
// at; the exit status that is returned tells of it.
int run_info(const InfoArguments& arguments, Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_INFO_COMMAND_H_
