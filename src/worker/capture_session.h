// The one open capture. Touched by the worker's tasks alone, and by dispose
// once the worker has ended.
#ifndef CORVANE_SRC_WORKER_CAPTURE_SESSION_H_
#define CORVANE_SRC_WORKER_CAPTURE_SESSION_H_

#include <memory>
#include <string>

#include "encoder/adts_aac_encoder.h"

namespace {

// Default-constructed it is closed. Destroying it destroys the encoder but
// leaves `fd` open: PluginState::CloseSession closes, for it has the words to
// report a failing close.
struct CaptureSession {
  bool IsOpen() const { return fd >= 0; }

  int fd = -1;  // owned
  std::string path;
  std::unique_ptr<AdtsAacEncoder> encoder;  // writes to `fd`
  bool paused = false;
};

}  // namespace

#endif  // CORVANE_SRC_WORKER_CAPTURE_SESSION_H_
