// A process that records until a limit kills it.
#ifndef CORVANE_TESTS_REAL_RECORDER_H_
#define CORVANE_TESTS_REAL_RECORDER_H_

#include <cstddef>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// What the recorder is fed.
std::vector<Bytes> RecorderChunks();

// The recorder's main function: a take to `path` with files ended at `limit`
// bytes, and with the signal for it as deadly as by default. Returns 0 when it
// lives to the end.
int record_until_killed(const std::string& path, size_t limit);

// Runs it in a process of its own; the status that waitpid() gives of it.
int RunRecorder(const std::string& path, size_t limit);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_REAL_RECORDER_H_
