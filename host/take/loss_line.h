// The log line of sound that was lost before it could be recorded.
#ifndef CORVANE_HOST_TAKE_LOSS_LINE_H_
#define CORVANE_HOST_TAKE_LOSS_LINE_H_

#include <string>

#include "audio/loss_watch.h"

namespace corvane {

// When, by the sound that came, paused or not; how long; and why, as far as
// that is known.
std::string line_of(const Loss& loss);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_LOSS_LINE_H_
