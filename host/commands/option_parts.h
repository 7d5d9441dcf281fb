// What the options of several commands are made of. Only for those who see all
// of CLI11, which takes seconds to compile.
#ifndef CORVANE_HOST_COMMANDS_OPTION_PARTS_H_
#define CORVANE_HOST_COMMANDS_OPTION_PARTS_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

namespace corvane {

// A validator would write its numbers into the help as well.
template <typename Number>
inline CLI::Validator within(Number least, Number most) {
  return CLI::Range(least, most).description("");
}

inline CLI::Validator file_name() {
  return {[](const std::string& name) {
            return name.empty() ? "the name is empty" : std::string();
          },
          ""};
}

// What is written is looked at and gone back to, which no pipe allows.
inline CLI::Validator output_name() {
  return {[](const std::string& name) {
            return name == "-" ? "standard output can't hold it; name a file "
                                 "(./- if that is its name)"
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

inline void add_format(CLI::App* command, const char* rate_help,
                       int* sample_rate, const char* channels_help,
                       int most_channels, int* channels) {
  command->add_option("-r", *sample_rate, rate_help)
      ->type_name("HZ")
      ->check(within(1, INT32_MAX));
  command->add_option("-c", *channels, channels_help)
      ->type_name("N")
      ->check(within(1, most_channels));
}

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_OPTION_PARTS_H_
