#include "support/chance.h"

#include <cstdlib>

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
