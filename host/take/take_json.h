// The figures of a take, for whoever called the program.
#ifndef CORVANE_HOST_TAKE_TAKE_JSON_H_
#define CORVANE_HOST_TAKE_TAKE_JSON_H_

#include "audio/audio_source.h"
#include "take/recorder.h"
#include "terminal/console.h"

namespace corvane {

// The figures of what was sealed, of which there must be something, as one JSON
// object on standard output. When that cannot be written, says so on the
// console and returns false.
bool print_figures(const TakeOptions& options, const AudioSource& source,
                   const TakeResult& take, Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_TAKE_JSON_H_
