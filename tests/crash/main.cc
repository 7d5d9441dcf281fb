// The test program, which is also the recorder that its tests kill.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "crash/chance.h"
#include "crash/recorder.h"

extern "C" {
#include <libavutil/log.h>
}

namespace corvane_test {

uint32_t TestSeed() {
  static const char* const given = getenv("CORVANE_TEST_SEED");
  static const uint32_t seed =
      given != nullptr ? static_cast<uint32_t>(strtoul(given, nullptr, 10))
                       : std::random_device()();
  return seed;
}

int CountFromEnvironment(const char* name, int otherwise) {
  const char* const given = getenv(name);
  const int count = given != nullptr ? atoi(given) : 0;
  return count > 0 ? count : otherwise;
}

}  // namespace corvane_test

// The address sanitizer asks for its options. What it keeps of freed memory
// makes each fork of the walk dearer, up to a tenth of a second.
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=8";
}

int main(int argc, char** argv) {
  av_log_set_level(AV_LOG_QUIET);
  if (argc > 1 && std::strcmp(argv[1], "--recorder") == 0) {
    return corvane_test::run_recorder({argv + 2, argv + argc});
  }
  // Thousands of small files that nobody keeps: memory serves them best.
  if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 0);
  testing::InitGoogleTest(&argc, argv);
  std::cout << "CORVANE_TEST_SEED=" << corvane_test::TestSeed() << std::endl;
  return RUN_ALL_TESTS();
}
