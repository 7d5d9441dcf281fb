// What a user is told when a take is over.
#ifndef CORVANE_HOST_TAKE_TAKE_REPORT_H_
#define CORVANE_HOST_TAKE_TAKE_REPORT_H_

#include "audio/audio_source.h"
#include "take/recorder.h"
#include "terminal/console.h"

namespace corvane {

// All that went wrong, on the console, each with its way out. Returns whether
// the take failed: an incomplete last sample frame is only mentioned.
bool report_problems(const TakeOptions& options, const AudioSource& source,
                     const TakeResult& take, Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_TAKE_REPORT_H_
