// The command line: which command, and its arguments. All that is told to
// users about options is in this part's source.
#ifndef CORVANE_HOST_COMMANDS_COMMAND_LINE_H_
#define CORVANE_HOST_COMMANDS_COMMAND_LINE_H_

#include <optional>

#include "commands/finalize_command.h"
#include "commands/info_command.h"
#include "commands/repair_wav_command.h"
#include "take/take_arguments.h"
#include "terminal/console.h"

namespace corvane {

enum class Command { kRecord, kResume, kFinalize, kDevices, kRepairWav, kInfo };

struct CommandLine {
  Command command = Command::kRecord;
  TakeArguments take;  // of record and resume
  FinalizeArguments finalize;
  InfoArguments info;
  Verbosity verbosity = Verbosity::kNormal;
  bool devices_as_json = false;
  RepairWavArguments repair_wav;
};

// Nothing, with the exit status in `status`, when no command is to run: help
// or the version was asked for and printed, or the usage is wrong, which was
// said on standard error.
std::optional<CommandLine> parse_command_line(int argc, char** argv,
                                              int* status);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_COMMAND_LINE_H_
