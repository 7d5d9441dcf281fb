// One take on an engine of its own, from the first sample to the JSON.
#ifndef CORVANE_HOST_TAKE_RUN_TAKE_H_
#define CORVANE_HOST_TAKE_RUN_TAKE_H_

#include "audio/audio_source.h"
#include "take/recorder.h"
#include "terminal/console.h"
#include "terminal/log_output.h"

namespace corvane {

// Records all of `source`, or until a signal ends it (TakeSignals), with
// progress and log on the console; prints the figures as JSON on standard
// output, and what went wrong on the console. Returns the exit status. `lock`
// is as for Recorder.
int run_take(const TakeOptions& options, AudioSource* source, CaptureLock lock,
             Console* console, LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_RUN_TAKE_H_
