// One take on an engine of its own, from the first sample to the JSON.
#ifndef CORVANE_HOST_RUN_TAKE_H_
#define CORVANE_HOST_RUN_TAKE_H_

#include "audio_source.h"
#include "console.h"
#include "log_output.h"
#include "recorder.h"

namespace corvane {

// Records all of `source`, or until SIGINT or SIGTERM, with progress and log on
// the console; prints the figures as JSON on standard output, and what went
// wrong on the console. Returns the exit status.
int run_take(const TakeOptions& options, AudioSource* source, Console* console,
             LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_RUN_TAKE_H_
