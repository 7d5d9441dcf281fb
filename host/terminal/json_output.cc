#include "terminal/json_output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace corvane {

Json json_of(const SealedCapture& sealed) {
  Json json;
  json["path"] = sealed.path;
  json["durationMs"] = sealed.duration_ms;
  json["bytes"] = sealed.bytes;
  json["sourceDurationMs"] = sealed.source_duration_ms;
  json["droppedAppendBytes"] = sealed.dropped_append_bytes;
  if (sealed.skipped_bytes) json["skippedBytes"] = *sealed.skipped_bytes;
  return json;
}

bool print_json(const Json& json, const std::string& consolation,
                Console* console) {
  // Both may be one terminal, and the live line has to be gone from it.
  console->Flush();
  // A path may be any bytes; JSON is UTF-8.
  const std::string text =
      json.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (std::printf("%s\n", text.c_str()) >= 0 && std::fflush(stdout) == 0) {
    return true;
  }
  const std::string reason = std::strerror(errno);
  console->Complain("the result could not be written to standard output: " +
                    reason + "; " + consolation);
  return false;
}

}  // namespace corvane
