#include "commands/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdint>
#include <memory>

#include "commands/help_layout.h"
#include "commands/help_texts.h"
#include "commands/option_parts.h"
#include "commands/take_options.h"
#include "commands/usage_hint.h"
#include "terminal/exit_status.h"

namespace corvane {
namespace {

// A WAV header's fields are this wide; more would be written as less.
constexpr int kMostWavChannels = 32767;

CLI::Validator input_name() {
  return {[](const std::string& name) {
            return name == "-" ? "standard input can't be looked at; name a "
                                 "file (./- if that is its name)"
                               : std::string();
          },
          ""};
}

void add_verbosity(CLI::App* command, Verbosity* verbosity) {
  const auto sets = [verbosity](Verbosity value) {
    return [verbosity, value](int64_t) { *verbosity = value; };
  };
  command->add_flag_function("-q,--quiet", sets(Verbosity::kQuiet),
                             "Say nothing but what went wrong");
  command->add_flag_function("-v,--verbose", sets(Verbosity::kVerbose),
                             "Say all that the plugin says");
}

CLI::App* add_finalize(CLI::App* app, FinalizeArguments* arguments) {
  CLI::App* command =
      app->add_subcommand("finalize", "Seal takes that were left behind");
  add_file(command, "OUT.aac", "The captures to seal", &arguments->paths);
  command->add_flag("--force", arguments->force,
                    "Take a file for a capture whatever it looks like");
  command->footer(kFinalizeNotes);
  return command;
}

CLI::App* add_repair_wav(CLI::App* app, RepairWavArguments* arguments) {
  CLI::App* command =
      app->add_subcommand("repair-wav", "Write a WAV file's header anew");
  add_file(command, "FILE.wav", "The file to repair", &arguments->path);
  add_format(command, "Sample rate; if left out, the old header's",
             &arguments->sample_rate, "Channels; if left out, the old header's",
             kMostWavChannels, &arguments->channels);
  command->add_flag("--force", arguments->force,
                    "Write it whatever the file is");
  command->footer(kRepairWavNotes);
  return command;
}

CLI::App* add_devices(CLI::App* app, bool* as_json) {
  CLI::App* command =
      app->add_subcommand("devices", "List what can be recorded from");
  command->add_flag("--json", *as_json, "As one array of JSON");
  command->footer(kDevicesNotes);
  return command;
}

CLI::App* add_info(CLI::App* app, InfoArguments* arguments) {
  CLI::App* command =
      app->add_subcommand("info", "Tell what takes hold; change nothing");
  add_file(command, "FILE", "The files to look at", &arguments->paths,
           input_name());
  command->add_flag("--json", arguments->json,
                    "Print an object for each file, one a line");
  command->footer(kInfoNotes);
  return command;
}

std::vector<std::string> names_in(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) {
    names.push_back(command->get_name());
  }
  return names;
}

}  // namespace

std::optional<CommandLine> parse_command_line(int argc, char** argv,
                                              int* status) {
  CLI::App app("Records audio crash-safely to ADTS files", "corvane");
  app.formatter(std::make_shared<HelpLayout>());
  app.footer(kExamples);
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  app.require_subcommand(1);
  app.failure_message([argc, argv](const CLI::App* app,
                                   const CLI::Error& error) {
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    return "corvane: " + usage_error(error.what(), words, names_in(*app)) +
           "\nRun corvane --help, or corvane COMMAND --help, to see how.\n";
  });
  CommandLine line;
  // One of the two is parsed at most, so they share their arguments.
  const std::pair<const CLI::App*, Command> commands[] = {
      {add_record(&app, &line.take), Command::kRecord},
      {add_resume(&app, &line.take), Command::kResume},
      {add_finalize(&app, &line.finalize), Command::kFinalize},
      {add_devices(&app, &line.devices_as_json), Command::kDevices},
      {add_repair_wav(&app, &line.repair_wav), Command::kRepairWav},
      {add_info(&app, &line.info), Command::kInfo}};
  for (CLI::App* command : app.get_subcommands({})) {
    add_verbosity(command, &line.verbosity);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    *status = app.exit(error) == 0 ? kExitDone : kExitUsage;
    return std::nullopt;
  }
  for (const auto& [app_of_it, command] : commands) {
    if (app_of_it->parsed()) line.command = command;
  }
  return line;
}

}  // namespace corvane
