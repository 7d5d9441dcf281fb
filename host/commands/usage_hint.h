// What a usage error is called, and what may have been meant.
#ifndef CORVANE_HOST_COMMANDS_USAGE_HINT_H_
#define CORVANE_HOST_COMMANDS_USAGE_HINT_H_

#include <string>
#include <vector>

namespace corvane {

// What is said of a command line that could not be read: `error`, the parser's
// own words, or better ones where the command, the first of `words`, is none of
// `commands`. With a hint behind it where a file's name was taken for options.
std::string usage_error(const std::string& error,
                        const std::vector<std::string>& words,
                        const std::vector<std::string>& commands);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_USAGE_HINT_H_
