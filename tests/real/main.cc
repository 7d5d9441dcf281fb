// The test program, which is also the recorder that a limit kills.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "real/recorder.h"
#include "real/small_disk.h"

extern "C" {
#include <libavutil/log.h>
}

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  if (argc == 4 && std::strcmp(argv[1], "--recorder") == 0) {
    return corvane_test::record_until_killed(argv[2], std::stoul(argv[3]));
  }
  // What fails here doesn't fail by the disk, whose syncs may take seconds.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
  corvane_test::EnterOwnMounts();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
