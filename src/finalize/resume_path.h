// "resumePath": recording goes on at the end of a capture that exists; only a
// torn last frame goes before. Worker thread.
#ifndef CORVANE_SRC_FINALIZE_RESUME_PATH_H_
#define CORVANE_SRC_FINALIZE_RESUME_PATH_H_

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "adts/scan.h"
#include "encoder/format_args.h"
#include "finalize/trim_torn_tail.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace {

// The format of the frames already there is not compared: every frame says its
// own.
Reply resume_capture_at(PluginState* state, const std::string& path,
                        const FormatArgs& format) {
  state->CloseSession("resumePath over an open session");
  const int fd = open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
  if (fd < 0) {
    const int errnum = errno;
    return error_reply(
        errno_error(errnum == ENOENT ? kErrCaptureMissing : kErrWriteFailed,
                    "capture not available for resume", path, errnum));
  }
  adts::Scan scan = {};
  const int errnum = trim_torn_tail(state, fd, path, &scan);
  if (errnum != 0) {
    close(fd);  // nothing was written through it: there is nothing to lose
    return error_reply(errno_error(
        kErrWriteFailed, "resumePath could not prepare capture", path, errnum));
  }
  state->OpenSession(fd, path, format.sample_rate, format.channels,
                     format.bit_rate);
  state->Log(kLevelInfo,
             "resumePath capture=" + path +
                 " bytes=" + std::to_string(scan.valid_end) +
                 " durationMs=" + std::to_string(scan.DurationMs()));
  return Reply();
}

}  // namespace

#endif  // CORVANE_SRC_FINALIZE_RESUME_PATH_H_
