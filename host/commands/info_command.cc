#include "commands/info_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>

#include "commands/info_table.h"
#include "looks/file_look.h"
#include "looks/findings.h"
#include "take/capture_lock.h"
#include "terminal/exit_status.h"
#include "terminal/json_output.h"
#include "terminal/waiting_line.h"

namespace corvane {
namespace {

struct Info {
  FileLook look;
  std::optional<CaptureHolder> holder;
};

// Who is at work on the file is found out by opening it, and opening a pipe is
// more than a look.
Info look_for_info(const std::string& path, Console* console) {
  const WaitingLine waiting(console, "looking at the capture");
  Info info;
  std::error_code error;
  if (std::filesystem::is_regular_file(path, error)) {
    info.holder = holder_of(path);
  }
  info.look = look_at_file(path, info.holder.has_value());
  return info;
}

template <typename Value>
Json or_null(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

// Null, or no runs, where no frame was searched for.
void put_figures(const FileLook& look, Json* json) {
  const std::optional<CaptureLook>& capture = look.capture;
  const Findings findings = capture ? findings_of(*capture) : Findings();
  const auto put = [&](const char* name, const Json& value) {
    (*json)[name] = capture ? value : Json(nullptr);
  };
  const bool has_format = capture && capture->format;
  const PcmFormat format = has_format ? *capture->format : PcmFormat();
  put("frames", or_null(findings.frames));
  put("durationMs", findings.duration_ms);
  (*json)["bytes"] = or_null(look.size);
  put("sampleRate", has_format ? Json(format.sample_rate) : Json(nullptr));
  put("channels", format.channels > 0 ? Json(format.channels) : Json(nullptr));
  put("tornBytes", findings.torn_bytes);
  put("skippedBytes", findings.foreign_between);
  put("trailingBytes", findings.foreign_behind);
}

Json json_of(const ForeignRuns& foreign) {
  Json runs = Json::array();
  for (const ForeignRun& run : foreign.listed) {
    runs.push_back({{"offset", run.offset}, {"bytes", run.bytes}});
  }
  return runs;
}

Json json_of(const std::string& path, const Info& info) {
  const FileLook& look = info.look;
  Json json;
  json["path"] = path;
  put_figures(look, &json);
  json["foreignRuns"] = json_of(look.foreign);
  json["foreignRunCount"] = look.foreign.count;
  json["isCapture"] = look.is_capture();
  json["kind"] = look.kind.empty() ? Json(nullptr) : Json(look.kind);
  json["needsRepair"] = look.needs_repair;
  json["inUse"] = info.holder.has_value();
  json["inUseBy"] = info.holder ? or_null(info.holder->pid) : Json(nullptr);
  json["error"] = look.is_capture() ? Json(nullptr) : Json(look.error);
  return json;
}

bool print_text(const std::string& text, Console* console) {
  if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) {
    return true;
  }
  const std::string reason = std::strerror(errno);
  console->Complain("the result could not be written to standard output: " +
                    reason + "; nothing was changed");
  return false;
}

bool print_info(const std::string& path, const Info& info, bool is_first,
                bool as_json, Console* console) {
  if (as_json) {
    return print_json(json_of(path, info), "nothing was changed", console);
  }
  if (!info.look.is_capture()) return true;
  return print_text(
      (is_first ? "" : "\n") + info_table(path, info.look, info.holder),
      console);
}

}  // namespace

int run_info(const InfoArguments& arguments, Console* console) {
  int status = kExitDone;
  bool is_first = true;
  for (const std::string& path : arguments.paths) {
    const Info info = look_for_info(path, console);
    // What can't be written once is not tried again for each file.
    if (!print_info(path, info, is_first, arguments.json, console)) {
      return kExitFailed;
    }
    if (info.look.is_capture()) {
      is_first = false;
    } else {
      console->Complain(path + ": " + info.look.error);
      status = kExitFailed;
    }
  }
  return status;
}

}  // namespace corvane
