// Standard error as a person reads it: whole lines, and on a terminal one
// live line below them that never gets mixed up with them.
#ifndef CORVANE_HOST_TERMINAL_CONSOLE_H_
#define CORVANE_HOST_TERMINAL_CONSOLE_H_

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "terminal/patient_writer.h"

namespace corvane {

// `text` with each control character as \xNN, so that a file's name can
// neither break a line nor steer the terminal.
std::string printable(std::string_view text);

// How much a command says beside its result.
enum class Verbosity {
  kQuiet,    // nothing but what went wrong
  kNormal,   // what it does as well
  kVerbose,  // every line of the plugin, and its errors in full
};

class Console {
 public:
  // `fd` is borrowed. What cannot be written to it is lost silently: there is
  // no place left to complain. Nothing here waits for whoever reads it.
  explicit Console(int fd);

  // kNormal until it is set, which is before anything is written.
  void SetVerbosity(Verbosity verbosity) { verbosity_ = verbosity; }
  Verbosity verbosity() const { return verbosity_; }
  bool is_verbose() const { return verbosity_ == Verbosity::kVerbose; }

  // From here on there is no live line.
  void DropLiveLine() { is_live_line_wanted_ = false; }

  // Whether a live line is to be shown, and can be: on a terminal that moves
  // its cursor.
  bool has_live_line() const {
    return has_live_line_ && is_live_line_wanted_ &&
           verbosity_ != Verbosity::kQuiet;
  }

  // The terminal that shows the live line; -1 where none is to be shown.
  int live_fd() const { return has_live_line() ? fd_ : -1; }

  // The terminal's width at this moment, in columns; 80 when unknown.
  int Columns() const;

  // Writes `text`, made printable, as one line. From any thread.
  void Line(std::string_view text);

  // The same for what the program itself has to say: its name goes before.
  void Complain(const std::string& sentence) { Line("corvane: " + sentence); }

  // The same for what a user may like to know, and can do without.
  void Note(const std::string& sentence) {
    if (verbosity_ != Verbosity::kQuiet) Complain(sentence);
  }

  // Waits for whoever reads, a second at most: for the end of the program.
  void Flush();

  // Replaces the live line; empty takes it away. `text` must fit the width.
  // A background job has none: the line is where somebody types.
  void Live(std::string text);

 private:
  std::string drawn() const;
  void Write(std::string_view text);

  const int fd_;
  // Where `fd` may block.
  const std::unique_ptr<PatientWriter> writer_;
  const bool has_live_line_;
  bool is_live_line_wanted_ = true;
  Verbosity verbosity_ = Verbosity::kNormal;
  std::mutex mutex_;  // guards live_ and the order of what is written
  std::string live_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_CONSOLE_H_
