#include "commands/command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <map>

#include "commands/help_texts.h"
#include "commands/take_usage.h"
#include "commands/time_word.h"
#include "commands/usage_hint.h"
#include "terminal/exit_status.h"

namespace corvane {
namespace {

// A WAV header's fields are this wide; more would be written as less.
constexpr int kMostWavChannels = 32767;

constexpr int kLongestInterval = 86400;  // seconds between two flushes

// What is shorter makes more files than anybody wants.
constexpr int64_t kShortestPartUs = 1'000'000;

// A validator would write its numbers into the help as well.
template <typename Number>
CLI::Validator within(Number least, Number most) {
  return CLI::Range(least, most).description("");
}

CLI::Validator file_name() {
  return {[](const std::string& name) {
            return name.empty() ? "the name is empty" : std::string();
          },
          ""};
}

// What is written is looked at and gone back to, which no pipe allows.
CLI::Validator output_name() {
  return {[](const std::string& name) {
            return name == "-" ? "standard output can't hold it; name a file "
                                 "(./- if that is its name)"
                               : std::string();
          },
          ""};
}

CLI::Validator input_name() {
  return {[](const std::string& name) {
            return name == "-" ? "standard input can't be looked at; name a "
                                 "file (./- if that is its name)"
                               : std::string();
          },
          ""};
}

// `path` may be several: a vector of them.
template <typename PathOrPaths>
void add_file(CLI::App* command, const char* name, const char* help,
              PathOrPaths* path,
              const CLI::Validator& validator = output_name()) {
  command->add_option(name, *path, help)
      ->type_name("")
      ->required()
      ->check(file_name())
      ->check(validator);
}

void add_format(CLI::App* command, const char* rate_help, int* sample_rate,
                const char* channels_help, int most_channels, int* channels) {
  command->add_option("-r", *sample_rate, rate_help)
      ->type_name("HZ")
      ->check(within(1, INT32_MAX));
  command->add_option("-c", *channels, channels_help)
      ->type_name("N")
      ->check(within(1, most_channels));
}

// A comparison with what is not a number is false, and CLI::Range goes by
// those.
std::string why_no_interval(const std::string& text) {
  double seconds = NAN;
  const bool is_number = CLI::detail::lexical_cast(text, seconds);
  if (is_number && seconds >= 0 && seconds <= kLongestInterval) return "";
  return "needs seconds, 0 to " + std::to_string(kLongestInterval) +
         ", and not '" + text + "'";
}

std::string why_no_time(const std::string& text) {
  const auto us = parse_time_word(text);
  if (us && *us > 0) return "";
  return "needs a time, as in 90 (seconds), 5m, 1:30:00, and not '" + text +
         "'";
}

std::string why_no_split(const std::string& text) {
  const auto us = parse_time_word(text);
  if (us && *us >= kShortestPartUs) return "";
  return "needs a second at least, and not '" + text + "'";
}

CLI::Option* add_time(CLI::App* command, const char* name, const char* help,
                      int64_t* us) {
  return command
      ->add_option_function<std::string>(
          name,
          [us](const std::string& word) {
            *us = parse_time_word(word).value_or(0);
          },
          help)
      ->type_name("TIME")
      ->check(CLI::Validator(why_no_time, ""));
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

void add_rate_options(CLI::App* command, TakeArguments* arguments) {
  command
      ->add_option("-b", arguments->bit_rate,
                   "AAC bits a second, as 96000 or 96k [64000;\n128000 from 3 "
                   "channels on, 192000 from 5]")
      ->type_name("BPS")
      ->transform(CLI::AsNumberWithUnit(std::map<std::string, int64_t>{
                                            {"k", 1000}, {"M", 1000000}})
                      .description(""))
      ->check(within(int64_t{1}, INT64_MAX));
  command
      ->add_option("--flush-every", arguments->flush_every_s,
                   "Make what was recorded durable this often;\n0: never [1]")
      ->type_name("SECONDS")
      ->check(CLI::Validator(why_no_interval, ""));
}

void add_take_options(CLI::App* command, bool has_capture,
                      TakeArguments* arguments) {
  add_time(command, "--duration",
           "End the take when it holds so much\n(90, 5m, 1:30:00)",
           &arguments->duration_us);
  command
      ->add_option("-i", arguments->input,
                   "Audio file, or - for raw stdin [the microphone]")
      ->type_name("FILE")
      ->check(file_name());
  command
      ->add_option("-D,--device", arguments->device,
                   "Record from this device; see corvane devices")
      ->type_name("NAME")
      ->check(file_name());
  add_format(command, "Rate, of raw audio or to record at [48000]",
             &arguments->sample_rate,
             "Channels of raw audio or to record, 1 to 6 [1]", INT32_MAX,
             &arguments->channels);
  add_rate_options(command, arguments);
  command->add_flag("--realtime", arguments->realtime,
                    "Feed no faster than the audio plays");
  command
      ->add_option("--chunk-ms", arguments->chunk_ms,
                   "Audio in one append, 1 to 1000 [as it comes]")
      ->type_name("MS")
      ->check(within(1, 1000));
  command->add_flag("--raw", arguments->raw,
                    "Take raw audio as samples however it starts");
  command->add_flag("--no-meter", arguments->no_meter,
                    "Show no line with level, time and size");
  command->add_flag("--force", arguments->force,
                    "Do what is refused for its format or its look");
  command->callback([arguments, has_capture] {
    const std::string objection = objection_to_usage(*arguments, has_capture);
    if (!objection.empty()) throw CLI::ValidationError(objection);
  });
}

CLI::App* add_record(CLI::App* app, TakeArguments* arguments) {
  CLI::App* command = app->add_subcommand("record", "Record a new take");
  add_file(command, "OUT.aac", "The capture to write", &arguments->output);
  add_take_options(command, false, arguments);
  add_time(command, "--split",
           "Begin a new file so often: OUT-001.aac,\nOUT-002.aac...",
           &arguments->split_us)
      ->check(CLI::Validator(why_no_split, ""));
  command->footer(kRecordNotes);
  return command;
}

CLI::App* add_resume(CLI::App* app, TakeArguments* arguments) {
  CLI::App* command =
      app->add_subcommand("resume", "Continue an interrupted take");
  add_file(command, "OUT.aac", "The capture to continue", &arguments->output);
  add_take_options(command, true, arguments);
  command->footer(kResumeNotes);
  return command;
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
  const CLI::App* record = add_record(&app, &line.take);
  const CLI::App* resume = add_resume(&app, &line.take);
  const CLI::App* finalize = add_finalize(&app, &line.finalize);
  const CLI::App* devices = add_devices(&app, &line.devices_as_json);
  const CLI::App* repair_wav = add_repair_wav(&app, &line.repair_wav);
  add_info(&app, &line.info);
  for (CLI::App* command : app.get_subcommands({})) {
    add_verbosity(command, &line.verbosity);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    *status = app.exit(error) == 0 ? kExitDone : kExitUsage;
    return std::nullopt;
  }
  line.command = record->parsed()       ? Command::kRecord
                 : resume->parsed()     ? Command::kResume
                 : finalize->parsed()   ? Command::kFinalize
                 : devices->parsed()    ? Command::kDevices
                 : repair_wav->parsed() ? Command::kRepairWav
                                        : Command::kInfo;
  return line;
}

}  // namespace corvane
