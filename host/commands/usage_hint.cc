#include "commands/usage_hint.h"

#include <unistd.h>

#include <algorithm>
#include <numeric>

#include "terminal/console.h"

namespace corvane {
namespace {

// Letters that differ, are missing or are too many between two words.
size_t distance(const std::string& from, const std::string& to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (const char letter : from) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < to.size(); ++j) {
      const size_t changed = diagonal + (letter == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

// A beginning of a command counts as the command itself.
size_t unlikeness(const std::string& word, const std::string& command) {
  return std::min(distance(word, command),
                  distance(word, command.substr(0, word.size())));
}

// Nothing when more than half of the letters would have to be others.
std::string nearest(const std::string& word,
                    const std::vector<std::string>& commands) {
  size_t least = word.empty() ? 0 : word.size() / 2 + 1;
  std::string best;
  for (const std::string& command : commands) {
    const size_t found = unlikeness(word, command);
    if (found >= least) continue;
    least = found;
    best = command;
  }
  return best;
}

std::string unknown_command(const std::string& word,
                            const std::vector<std::string>& commands) {
  const std::string text = "there is no command \"" + printable(word) + "\"";
  const std::string meant = nearest(word, commands);
  if (!meant.empty()) return text + "; did you mean " + meant + "?";
  std::string all;
  for (const std::string& command : commands) {
    all += (all.empty() ? "" : ", ") + command;
  }
  return text + "; there are " + all;
}

// No option has a dot or a slash in it, nor the name of a file.
bool may_be_a_name(const std::string& word) {
  return word.size() > 1 && word[0] == '-' &&
         (word.find_first_of("./") != std::string::npos ||
          access(word.c_str(), F_OK) == 0);
}

std::string hint_of_dashes(const std::vector<std::string>& words) {
  const auto end = std::find(words.begin() + 1, words.end(), "--");
  const auto name = std::find_if(words.begin() + 1, end, may_be_a_name);
  if (name == end) return "";
  const std::string shown = printable(*name);
  return "; if " + shown + " is a name, put it behind --, or write ./" + shown;
}

}  // namespace

std::string usage_error(const std::string& error,
                        const std::vector<std::string>& words,
                        const std::vector<std::string>& commands) {
  if (words.empty()) return error;  // no command, and nothing to go by
  const std::string& first = words.front();
  if (first.rfind('-', 0) != 0 &&
      std::find(commands.begin(), commands.end(), first) == commands.end()) {
    return unknown_command(first, commands);
  }
  return printable(error) + hint_of_dashes(words);
}

}  // namespace corvane
