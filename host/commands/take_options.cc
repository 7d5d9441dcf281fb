#include "commands/take_options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>

#include "commands/help_texts.h"
#include "commands/option_parts.h"
#include "commands/take_usage.h"
#include "commands/time_word.h"

namespace corvane {
namespace {

constexpr int kLongestInterval = 86400;  // seconds between two flushes

// What is shorter makes more files than anybody wants.
constexpr int64_t kShortestPartUs = 1'000'000;

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

}  // namespace

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

}  // namespace corvane
