// How a command's help is put together.
#ifndef CORVANE_HOST_COMMANDS_HELP_LAYOUT_H_
#define CORVANE_HOST_COMMANDS_HELP_LAYOUT_H_

#include <CLI/CLI.hpp>
#include <string>

namespace corvane {

// The same order with every release of CLI11, and the notes below the options
// as they were written: newer ones fill them like a paragraph, which joins the
// examples to the text, and begin the usage without its word.
class HelpLayout : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App* app, std::string name) const override {
    const std::string word = "Usage:";
    const std::string all = CLI::Formatter::make_usage(app, "");
    const size_t rest = all.find(word) + word.size();
    return word + " " + name + all.substr(rest, all.find('\n', rest) - rest) +
           "\n";
  }

  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override {
    return app->get_description() + "\n" + make_usage(app, name) +
           make_positionals(app) + make_groups(app, mode) +
           make_subcommands(app, mode) + "\n" + app->get_footer() + "\n";
  }
};

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_HELP_LAYOUT_H_
