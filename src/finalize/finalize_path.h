// "finalizePath": seals a capture by its path, the live one too. Worker thread,
// but for the check that what is asked for is the capture itself.
#ifndef CORVANE_SRC_FINALIZE_FINALIZE_PATH_H_
#define CORVANE_SRC_FINALIZE_FINALIZE_PATH_H_

#include <flutter_linux/flutter_linux.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "encoder/format_args.h"
#include "finalize/seal.h"
#include "worker/open_close.h"
#include "worker/plugin_state.h"

namespace {

// The working directory, or nothing when it cannot be told: a relative path
// then counts from the root.
std::string working_directory() {
  const std::unique_ptr<char, decltype(&free)> directory(getcwd(nullptr, 0),
                                                         free);
  return directory ? directory.get() : "";
}

// Splits at every '/'; empty pieces and "." vanish, ".." takes one back.
std::vector<std::string> path_components(const std::string& path) {
  std::vector<std::string> kept;
  for (size_t start = 0; start <= path.size();) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::string piece = path.substr(start, end - start);
    if (piece == "..") {
      if (!kept.empty()) {
        kept.pop_back();
      }
    } else if (!piece.empty() && piece != ".") {
      kept.push_back(piece);
    }
    start = end + 1;
  }
  return kept;
}

// The absolute form of `path`, by its letters alone: links are not resolved and
// nothing needs to exist. A relative path means the working directory of now.
std::string normalize_path(const std::string& path) {
  const bool absolute = !path.empty() && path.front() == '/';
  std::string normalized;
  for (const std::string& component :
       path_components(absolute ? path : working_directory() + "/" + path)) {
    normalized += "/" + component;
  }
  return normalized.empty() ? "/" : normalized;
}

NativeError other_output_error(const std::string& capture,
                               const std::string& output) {
  return plain_error(kErrInvalidArgs,
                     "ADTS capture is its own deliverable; outputPath " +
                         output + " must equal capturePath",
                     capture);
}

// `normalized` is what `path` meant when the call came. A session that records
// into another file goes on undisturbed.
Reply finalize_capture(PluginState* state, const std::string& path,
                       const std::string& normalized) {
  const CaptureSession& session = state->session;
  uint64_t dropped = 0;
  if (session.IsOpen() && normalize_path(session.path) == normalized) {
    dropped = state->dropped_append_bytes;
    state->CloseSession("finalizePath");
  }
  return seal(state, path, dropped, "finalizePath");
}

// Main thread.
void handle_finalize_path(FlMethodCall* call, FlValue* args,
                          PluginState* state) {
  const char* capture = lookup_path(args, "capturePath");
  const char* output = lookup_path(args, "outputPath");
  if (capture == nullptr || output == nullptr) {
    enqueue_invalid(state, call,
                    "finalizePath requires capturePath, outputPath");
    return;
  }
  FormatArgs format;  // checked for the application's sake, not used
  NativeError error;
  if (!lookup_adts_format(args, "finalizePath", &format, &error)) {
    enqueue_error(state, call, std::move(error));
    return;
  }
  std::string normalized = normalize_path(capture);
  if (normalized != normalize_path(output)) {
    enqueue_error(state, call, other_output_error(capture, output));
    return;
  }
  state->Enqueue(call, [state, path = std::string(capture),
                        normalized = std::move(normalized)] {
    return finalize_capture(state, path, normalized);
  });
}

}  // namespace

#endif  // CORVANE_SRC_FINALIZE_FINALIZE_PATH_H_
