// "start": a new capture, with what lies at its path moved aside. Worker
// thread.
#ifndef CORVANE_SRC_RECORDING_START_H_
#define CORVANE_SRC_RECORDING_START_H_

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "encoder/format_args.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace {

constexpr char kOrphanInfix[] = ".orphan";
constexpr int kOrphanSlots = 100;

// Slot `n` of 0..99 for `path`, in the same directory, so that moving a file
// into it is one rename: take.aac gives take.orphan.aac, take.orphan1.aac...
std::string orphan_slot(const std::string& path, int n) {
  const size_t slash = path.rfind('/');
  const size_t base = slash == std::string::npos ? 0 : slash + 1;
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot < base) {
    dot = path.size();  // a dot in a directory's name splits nothing
  }
  const std::string number = n == 0 ? "" : std::to_string(n);
  return path.substr(0, dot) + kOrphanInfix + number + path.substr(dot);
}

// A stat that fails without an errno proves nothing, so the slot stays taken.
bool is_taken(const std::string& slot) {
  struct stat status;
  return stat(slot.c_str(), &status) == 0 || errno == 0;
}

std::optional<std::string> find_free_slot(const std::string& path) {
  for (int n = 0; n < kOrphanSlots; ++n) {
    std::string slot = orphan_slot(path, n);
    if (!is_taken(slot)) {
      return slot;
    }
  }
  return std::nullopt;
}

// Moves the non-empty entry at `path` into the first free slot; false, with the
// reason logged, when it stays where it is.
bool preserve_orphan(PluginState* state, const std::string& path) {
  const std::optional<std::string> slot = find_free_slot(path);
  if (!slot) {
    state->Log(kLevelError, "no free orphan slot for " + path);
    return false;
  }
  if (rename(path.c_str(), slot->c_str()) != 0) {
    const int errnum = errno;
    state->Log(kLevelError, "could not preserve orphan audio " + path + ": " +
                                strerror(errnum));
    return false;
  }
  state->Log(kLevelWarning, "preserved orphan audio " + path + " as " + *slot);
  return true;
}

// Whatever is not empty counts as audio worth keeping: nothing is examined.
bool holds_audio(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && status.st_size != 0;
}

Reply start_capture(PluginState* state, const std::string& path,
                    const FormatArgs& format) {
  state->CloseSession("start over an open session");
  if (holds_audio(path) && !preserve_orphan(state, path)) {
    return error_reply(
        plain_error(kErrWriteFailed,
                    "existing audio at target could not be preserved", path));
  }
  // Appending, so that a write can never land on audio that is there.
  const int fd = open(path.c_str(),
                      O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) {
    const int errnum = errno;
    return error_reply(errno_error(
        kErrWriteFailed, "Failed to create capture file", path, errnum));
  }
  state->OpenSession(fd, path, format.sample_rate, format.channels,
                     format.bit_rate);
  state->Log(kLevelInfo, "start capture=" + path +
                             " rate=" + std::to_string(format.sample_rate) +
                             " channels=" + std::to_string(format.channels) +
                             " bitRate=" + std::to_string(format.bit_rate));
  return Reply();
}

}  // namespace

#endif  // CORVANE_SRC_RECORDING_START_H_
