// The last step of a capture that is handed to Dart: repaired, made durable and
// verified. Worker thread.
#ifndef CORVANE_SRC_FINALIZE_SEAL_H_
#define CORVANE_SRC_FINALIZE_SEAL_H_

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "adts/scan.h"
#include "finalize/trim_torn_tail.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/plugin_state.h"

namespace {

// Trims and syncs the capture behind `fd`, then takes its size in bytes.
// Returns 0 or the first failure's errno value.
int repair_and_sync(PluginState* state, int fd, const std::string& path,
                    adts::Scan* scan, int64_t* bytes) {
  const int trimmed = trim_torn_tail(state, fd, path, scan);
  if (trimmed != 0) {
    return trimmed;
  }
  struct stat status;
  if (fsync(fd) != 0 || fstat(fd, &status) != 0) {
    return failure_errno();
  }
  *bytes = status.st_size;
  return 0;
}

// The verdict on a capture of `bytes` bytes that is repaired and durable.
Reply verified_reply(const std::string& path, const adts::Scan& scan,
                     int64_t bytes, uint64_t dropped) {
  if (scan.samples < 1) {
    return error_reply(plain_error(kErrVerifyFailed,
                                   "capture holds no complete AAC frame (" +
                                       std::to_string(bytes) + " bytes)",
                                   path));
  }
  Reply reply;
  reply.kind = kReplyResult;
  reply.path = path;
  reply.duration_ms = scan.DurationMs();
  reply.bytes = bytes;
  // An ADTS capture is its own deliverable: source and result are one file.
  reply.source_duration_ms = reply.duration_ms;
  reply.dropped_append_bytes = static_cast<int64_t>(dropped);
  return reply;
}

// Opens, repairs and closes the capture, and answers what became of it.
Reply seal_file(PluginState* state, const std::string& path, uint64_t dropped,
                adts::Scan* scan) {
  const int fd = open(path.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) {
    const int errnum = errno;
    return error_reply(
        errno_error(errnum == ENOENT ? kErrCaptureMissing : kErrFinalizeFailed,
                    "capture not available", path, errnum));
  }
  int64_t bytes = 0;
  int errnum = repair_and_sync(state, fd, path, scan, &bytes);
  if (close(fd) != 0 && errnum == 0) {
    errnum = failure_errno();
  }
  if (errnum != 0) {
    return error_reply(errno_error(kErrFinalizeFailed, "sealing capture failed",
                                   path, errnum));
  }
  return verified_reply(path, *scan, bytes, dropped);
}

// Seals the capture at `path`, which no session may have open. `dropped` (PCM
// bytes) is passed through to the log and the reply; `label` names the method
// in the log. A capture that fails verification stays, less its torn tail.
Reply seal(PluginState* state, const std::string& path, uint64_t dropped,
           const std::string& label) {
  const std::string dropped_text =
      " droppedAppendBytes=" + std::to_string(dropped);
  state->Log(kLevelInfo, label + " start capture=" + path + dropped_text);
  adts::Scan scan = {};
  Reply reply = seal_file(state, path, dropped, &scan);
  if (reply.kind == kReplyResult) {
    state->Log(kLevelInfo,
               label + " end capture=" + path +
                   " bytes=" + std::to_string(reply.bytes) +
                   " durationMs=" + std::to_string(reply.duration_ms) +
                   " skippedBytes=" + std::to_string(scan.skipped_bytes) +
                   dropped_text);
  }
  return reply;
}

}  // namespace

#endif  // CORVANE_SRC_FINALIZE_SEAL_H_
