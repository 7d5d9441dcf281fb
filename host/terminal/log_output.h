// Brings each log line to the console once, and of equal ones in a row the
// first and a count: a full disk fails every append under way. The plugin
// writes every line to the GLib log and also sends it on its event channel: the
// event is what is shown, because it carries the plugin's own level word.
#ifndef CORVANE_HOST_TERMINAL_LOG_OUTPUT_H_
#define CORVANE_HOST_TERMINAL_LOG_OUTPUT_H_

#include <glib.h>

#include <deque>
#include <mutex>
#include <string>

#include "terminal/console.h"

namespace corvane {

class LogOutput {
 public:
  // `console` is borrowed and must outlive this.
  explicit LogOutput(Console* console);

  // The domain under which libav's own remarks come.
  static constexpr char kLibavDomain[] = "libav";
  // And ALSA's, which only matter to who looks for a fault.
  static constexpr char kAlsaDomain[] = "alsa";

  // Makes this GLib's only log writer, for the rest of the process (GLib takes
  // one writer and never lets go of it), so this must live as long. All of it
  // goes to the console, debug messages too, which GLib itself would put on
  // standard output.
  void TakeOverGlib();

  // What GLib hands its writer. From any thread: a line of the plugin waits
  // here for its event, and one of libav for the next event, since it belongs
  // between those of the plugin; anything else is written at once.
  void OnGlibMessage(GLogLevelFlags level, const GLogField* fields,
                     gsize field_count);

  // A line from the event channel. Lines that were logged before it and whose
  // events never came are written first.
  void OnEvent(const std::string& level, const std::string& message);

  // Writes what still waits, for the end: after the plugin went down no event
  // comes.
  void Flush();

 private:
  struct Waiting {
    const char* level;
    std::string message;
  };

  bool IsWanted(const std::string& level);
  void WriteLine(const std::string& level, const std::string& message);
  void WriteRepeats();

  Console* const console_;
  std::mutex mutex_;  // guards waiting_
  std::deque<Waiting> waiting_;
  // Of the thread that takes the events.
  bool has_failed_ = false;
  std::string last_line_;
  int repeats_ = 0;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_LOG_OUTPUT_H_
