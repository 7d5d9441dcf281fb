// "pause", "resume", "stop", "cancel" and "flush". Worker thread.
#ifndef CORVANE_SRC_RECORDING_CONTROLS_H_
#define CORVANE_SRC_RECORDING_CONTROLS_H_

#include <flutter_linux/flutter_linux.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "finalize/seal.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace {

// The codec is drained and freed; the carry waits for the first chunk after
// "resume".
Reply pause_capture(PluginState* state) {
  CaptureSession& session = state->session;
  if (!session.IsOpen()) {
    return Reply();
  }
  session.paused = true;
  NativeError error;
  if (!session.encoder->Finish(&error)) {
    state->Log(kLevelWarning,
               "pause drain failed for " + session.path + ": " + error.message);
  }
  return Reply();
}

Reply resume_capture(PluginState* state) {
  state->session.paused = false;
  return Reply();
}

Reply stop_capture(PluginState* state) {
  if (!state->session.IsOpen()) {
    return error_reply(
        plain_error(kErrNotRecording, "stop with no open recording"));
  }
  const std::string path = state->session.path;
  const uint64_t dropped = state->dropped_append_bytes;
  state->CloseSession("stop");
  return seal(state, path, dropped, "stop");
}

// The file stays: nothing here deletes audio.
Reply cancel_capture(PluginState* state) {
  state->CloseSession("cancel");
  return Reply();
}

// Makes durable what is written; what the codec still holds is not written.
Reply flush_capture(PluginState* state) {
  const CaptureSession& session = state->session;
  if (session.IsOpen() && fsync(session.fd) != 0) {
    const int errnum = errno;
    return error_reply(
        errno_error(kErrWriteFailed, "flush failed", session.path, errnum));
  }
  return Reply();
}

// Main thread.
void handle_flush(FlMethodCall* call, PluginState* state) {
  state->Enqueue(call, [state] { return flush_capture(state); });
}

}  // namespace

#endif  // CORVANE_SRC_RECORDING_CONTROLS_H_
