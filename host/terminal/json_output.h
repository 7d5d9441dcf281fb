// The one JSON object that a command leaves on standard output.
#ifndef CORVANE_HOST_TERMINAL_JSON_OUTPUT_H_
#define CORVANE_HOST_TERMINAL_JSON_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <string>

#include "engine/plugin_reply.h"
#include "terminal/console.h"

namespace corvane {

using Json = nlohmann::ordered_json;

// The reply's five figures under their own names, and what was skipped.
Json json_of(const SealedCapture& sealed);

// Writes `json` as one line. When that fails, says so on the console, with
// `consolation` behind it, and returns false.
bool print_json(const Json& json, const std::string& consolation,
                Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_JSON_OUTPUT_H_
