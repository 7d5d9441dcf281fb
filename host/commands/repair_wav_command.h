// `corvane repair-wav`: a new header for a WAV file whose writer died.
#ifndef CORVANE_HOST_COMMANDS_REPAIR_WAV_COMMAND_H_
#define CORVANE_HOST_COMMANDS_REPAIR_WAV_COMMAND_H_

#include <string>

#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

struct RepairWavArguments {
  std::string path;
  int sample_rate = 0;  // Hz; 0 for what the old header says
  int channels = 0;     // the same
  bool force = false;   // whatever the file is
};

// The plugin writes its 44 bytes over any file: this looks at the file first,
// and leaves alone what they would damage. Prints what was changed, as JSON on
// standard output and in words on the console. Returns the exit status.
int run_repair_wav(const RepairWavArguments& arguments, Console* console,
                   LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_REPAIR_WAV_COMMAND_H_
