#include "support/run_seeded.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "support/chance.h"

extern "C" {
#include <libavutil/log.h>
}

namespace corvane_test {

int RunSeeded(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  // Thousands of small files that nobody keeps: memory serves them best.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
  testing::InitGoogleTest(&argc, argv);
  std::cout << "CORVANE_TEST_SEED=" << TestSeed() << std::endl;
  return RUN_ALL_TESTS();
}

}  // namespace corvane_test
