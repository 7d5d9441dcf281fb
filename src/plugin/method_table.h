// The method table: a call is recognised by name, its arguments are checked and
// copied, and its work is queued. Main thread; no file is touched here.
#ifndef CORVANE_SRC_PLUGIN_METHOD_TABLE_H_
#define CORVANE_SRC_PLUGIN_METHOD_TABLE_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "encoder/format_args.h"
#include "finalize/finalize_path.h"
#include "finalize/finalize_wav_only.h"
#include "finalize/resume_path.h"
#include "recording/append.h"
#include "recording/controls.h"
#include "recording/start.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/plugin_state.h"

namespace {

// The arguments that "start" and "resumePath" share.
struct CaptureArgs {
  std::string path;  // as Dart sent it
  FormatArgs format;
};

// False when the arguments are refused; the call is then queued for its error.
bool check_capture_args(FlMethodCall* call, FlValue* args, PluginState* state,
                        CaptureArgs* checked) {
  const std::string method = fl_method_call_get_name(call);
  const char* path = lookup_path(args, "capturePath");
  if (path == nullptr) {
    enqueue_invalid(state, call, (method + " requires capturePath").c_str());
    return false;
  }
  NativeError error;
  if (!lookup_adts_format(args, method, &checked->format, &error)) {
    enqueue_error(state, call, std::move(error));
    return false;
  }
  checked->path = path;
  return true;
}

void handle_start(FlMethodCall* call, FlValue* args, PluginState* state) {
  CaptureArgs checked;
  if (check_capture_args(call, args, state, &checked)) {
    state->Enqueue(call, [state, checked = std::move(checked)] {
      return start_capture(state, checked.path, checked.format);
    });
  }
}

// The chunk is copied here, once: Dart may reuse its buffer from now on.
void handle_append(FlMethodCall* call, FlValue* args, PluginState* state) {
  if (args == nullptr || fl_value_get_type(args) != FL_VALUE_TYPE_UINT8_LIST) {
    enqueue_invalid(state, call, "append requires Uint8List");
    return;
  }
  const uint8_t* bytes = fl_value_get_uint8_list(args);
  state->Enqueue(call, [state, chunk = std::vector<uint8_t>(
                                   bytes, bytes + fl_value_get_length(args))] {
    return append_chunk(state, chunk);
  });
}

// A method that looks at no argument.
template <Reply (*task)(PluginState*)>
void handle_control(FlMethodCall* call, FlValue* /*args*/, PluginState* state) {
  state->Enqueue(call, [state] { return task(state); });
}

void handle_resume_path(FlMethodCall* call, FlValue* args, PluginState* state) {
  CaptureArgs checked;
  if (check_capture_args(call, args, state, &checked)) {
    state->Enqueue(call, [state, checked = std::move(checked)] {
      return resume_capture_at(state, checked.path, checked.format);
    });
  }
}

struct Method {
  const char* name;
  void (*handle)(FlMethodCall* call, FlValue* args, PluginState* state);
};

constexpr Method kMethods[] = {
    {"start", handle_start},
    {"append", handle_append},
    {"pause", handle_control<pause_capture>},
    {"resume", handle_control<resume_capture>},
    {"stop", handle_control<stop_capture>},
    {"cancel", handle_control<cancel_capture>},
    {"resumePath", handle_resume_path},
    {"finalizePath", handle_finalize_path},
    {"finalizeWavOnly", handle_finalize_wav_only},
    {"flush", [](FlMethodCall* call, FlValue* /*args*/,
                 PluginState* state) { handle_flush(call, state); }},
};

// Main thread. Answers at once, ahead of all queued calls; that the embedding
// may refuse is nobody's business any more.
void respond_not_implemented(FlMethodCall* call) {
  g_autoptr(FlMethodResponse) response =
      FL_METHOD_RESPONSE(fl_method_not_implemented_response_new());
  fl_method_call_respond(call, response, nullptr);
}

// An unknown method is answered at once; any other call in its turn.
void dispatch(FlMethodCall* call, PluginState* state) {
  const char* name = fl_method_call_get_name(call);
  for (const Method& method : kMethods) {
    if (g_str_equal(name, method.name)) {
      method.handle(call, fl_method_call_get_args(call), state);
      return;
    }
  }
  respond_not_implemented(call);
}

}  // namespace

#endif  // CORVANE_SRC_PLUGIN_METHOD_TABLE_H_
