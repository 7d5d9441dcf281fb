// A WAV file whose recorder died, as the audio of a take.
#ifndef CORVANE_HOST_LOOKS_DEAD_WAV_H_
#define CORVANE_HOST_LOOKS_DEAD_WAV_H_

#include <string>

namespace corvane {

// Why the header of the WAV file at `path` hides audio that is in it, and what
// to do first, as a clause. Empty for any other file: one that can't be opened
// too, and one whose header names more audio than there is.
std::string objection_to_dead_wav(const std::string& path);

// That the header of the WAV file at `path` names audio that isn't in it, as a
// clause: it was cut short, or is still being written. Empty for any other
// file, and for sizes that a writer gives that doesn't know them yet.
std::string shortage_of_wav(const std::string& path);

}  // namespace corvane

#endif  // CORVANE_HOST_LOOKS_DEAD_WAV_H_
