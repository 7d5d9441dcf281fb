// The options of `record` and `resume`.
#ifndef CORVANE_HOST_COMMANDS_TAKE_OPTIONS_H_
#define CORVANE_HOST_COMMANDS_TAKE_OPTIONS_H_

#include "take/take_arguments.h"

namespace CLI {
class App;
}

namespace corvane {

// Each adds its command to `app`, which owns it; `arguments` is borrowed until
// that has parsed.
CLI::App* add_record(CLI::App* app, TakeArguments* arguments);
CLI::App* add_resume(CLI::App* app, TakeArguments* arguments);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_TAKE_OPTIONS_H_
