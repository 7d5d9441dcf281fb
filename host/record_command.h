// `corvane record`: what it takes, what it does, what it says.
#ifndef CORVANE_HOST_RECORD_COMMAND_H_
#define CORVANE_HOST_RECORD_COMMAND_H_

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "console.h"
#include "log_output.h"

namespace corvane {

// The program's exit statuses.
constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

struct RecordOptions {
  std::string output;
  std::string input = "-";  // a file, or "-" for raw PCM on standard input
  int sample_rate = 0;      // Hz; 0 when not given
  int channels = 0;         // 0 when not given
  std::optional<int64_t> bit_rate;
  bool realtime = false;
  int chunk_ms = 20;
};

// Adds the command to `app`; parsing fills `options`, which must outlive `app`.
CLI::App* add_record_command(CLI::App* app, RecordOptions* options);

// Records a take and prints its figures as JSON on standard output, everything
// else on the console. Returns the exit status.
int run_record(const RecordOptions& options, Console* console, LogOutput* log);

}  // namespace corvane

#endif  // CORVANE_HOST_RECORD_COMMAND_H_
