// "finalizeWavOnly": the check of what the repair of a WAV file needs. Main
// thread.
#ifndef CORVANE_FINALIZE_FINALIZE_WAV_ONLY_H_
#define CORVANE_FINALIZE_FINALIZE_WAV_ONLY_H_

#include <flutter_linux/flutter_linux.h>

#include "encoder/format_args.h"
#include "worker/plugin_state.h"

namespace {

void handle_finalize_wav_only(FlMethodCall* call, FlValue* args,
                              PluginState* state) {
  FormatArgs format;
  if (lookup_path(args, "wavPath") == nullptr ||
      !lookup_wav_format(args, &format)) {
    enqueue_invalid(state, call,
                    "finalizeWavOnly requires wavPath, sampleRate, channels");
    return;
  }
  respond_not_implemented(call);
}

}  // namespace

#endif  // CORVANE_FINALIZE_FINALIZE_WAV_ONLY_H_
