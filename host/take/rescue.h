// What becomes of a capture that was removed while it was being written.
#ifndef CORVANE_HOST_TAKE_RESCUE_H_
#define CORVANE_HOST_TAKE_RESCUE_H_

#include <string>

namespace corvane {

struct Rescue {
  std::string path;   // where the audio is now; empty when it is lost
  std::string error;  // why it is nowhere, as a clause
};

// Copies all of `fd` (borrowed), the file that was at `capture_path`, into a
// new file beside where it was: into its folder, or the next one above that is
// still there; where that can't be, into the home folder. Nothing that exists
// is touched, and the copy is durable.
Rescue rescue_removed(int fd, const std::string& capture_path);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_RESCUE_H_
