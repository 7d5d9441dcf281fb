// One program at a time on one capture: an advisory lock on the file, which
// goes with its holder, whatever ends that (open file description locks,
// fcntl(2)).
#ifndef CORVANE_HOST_TAKE_CAPTURE_LOCK_H_
#define CORVANE_HOST_TAKE_CAPTURE_LOCK_H_

#include <sys/types.h>

#include <optional>
#include <string>

#include "engine/file_descriptor.h"

namespace corvane {

// Another program that is at work on a capture.
struct CaptureHolder {
  std::optional<pid_t> pid;  // where /proc tells it
};

// Who is at work on what is at `path`, if anybody is. Changes nothing.
std::optional<CaptureHolder> holder_of(const std::string& path);

// Why the capture is left alone, as a clause.
std::string held_by(const CaptureHolder& holder);

// Of one thread.
class CaptureLock {
 public:
  // Locks what is at `path` for as long as this lives, and says who was faster.
  // What can't be locked (no regular file, a file system without locks) is
  // nobody's; is_open() tells whether the file could be opened at least.
  std::optional<CaptureHolder> Take(const std::string& path);

  // The file, open to read; for as long as this lives.
  int fd() const { return file_.get(); }
  bool is_open() const { return file_.is_open(); }

  // Whether `path` leads to the file that was locked.
  bool IsAt(const std::string& path) const;
  // Whether no name leads to it any more.
  bool IsRemoved() const;
  // Whether this process has it open in another place too, as the plugin has.
  bool IsOpenElsewhereHere() const;
  // The name that it has now, as far as /proc tells; empty where it doesn't.
  std::string CurrentName() const;

 private:
  FileDescriptor file_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_CAPTURE_LOCK_H_
