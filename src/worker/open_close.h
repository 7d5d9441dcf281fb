// Installing and closing the capture. Worker thread; dispose closes on the main
// thread once the worker has ended.
#ifndef CORVANE_SRC_WORKER_OPEN_CLOSE_H_
#define CORVANE_SRC_WORKER_OPEN_CLOSE_H_

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "encoder/adts_aac_encoder.h"
#include "worker/capture_session.h"
#include "worker/plugin_state.h"

namespace {

// Takes over `fd`. A session that is still open would be overwritten and its
// descriptor leaked: callers close first.
void PluginState::OpenSession(int fd, const std::string& path, int sample_rate,
                              int channels, int64_t bit_rate) {
  session.fd = fd;
  session.path = path;
  session.paused = false;
  session.encoder = std::make_unique<AdtsAacEncoder>(
      fd, path, sample_rate, channels, bit_rate,
      [this](const char* level, const std::string& message) {
        Log(level, message);
      });
  dropped_append_bytes = 0;
  append_failure_reported = false;
}

// Drains, syncs and closes the capture, whatever fails on the way: each failure
// is only logged, and whoever seals the file sees its real state. Does nothing
// when none is open. The counters stay, to be read afterwards.
void PluginState::CloseSession(const std::string& reason) {
  if (!session.IsOpen()) {
    return;
  }
  const std::string path = session.path;
  const auto warn = [&](const char* step, const std::string& text) {
    Log(kLevelWarning, std::string(step) + " on " + reason + " failed for " +
                           path + ": " + text);
  };
  int64_t frames = 0;
  if (session.encoder) {
    NativeError error;
    if (!session.encoder->Finish(&error)) {
      warn("codec drain", error.message);
    }
    frames = static_cast<int64_t>(session.encoder->frames_written);
  }
  if (fsync(session.fd) != 0) {
    warn("sync", strerror(errno));
  }
  if (close(session.fd) != 0) {
    warn("close", strerror(errno));
  }
  session = CaptureSession();
  Log(kLevelInfo, "closed capture on " + reason + ": " + path +
                      " frames=" + std::to_string(frames));
}

}  // namespace

#endif  // CORVANE_SRC_WORKER_OPEN_CLOSE_H_
