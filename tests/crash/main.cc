// The test program, which is also the recorder that its tests kill.
#include <cstring>

#include "crash/recorder.h"
#include "support/run_seeded.h"

extern "C" {
#include <libavutil/log.h>
}

// The address sanitizer asks for its options. What it keeps of freed memory
// makes each fork of the walk dearer, up to a tenth of a second.
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=8";
}

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--recorder") == 0) {
    av_log_set_level(AV_LOG_QUIET);
    return corvane_test::run_recorder({argv + 2, argv + argc});
  }
  return corvane_test::RunSeeded(argc, argv);
}
