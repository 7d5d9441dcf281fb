// Everything that these tests leave to chance comes from one seed, which the
// test program prints: CORVANE_TEST_SEED=N repeats a run.
#ifndef CORVANE_TESTS_SUPPORT_CHANCE_H_
#define CORVANE_TESTS_SUPPORT_CHANCE_H_

#include <cstdint>
#include <random>

namespace corvane_test {

// The seed of this run: the environment's, or a new one.
uint32_t TestSeed();

// A whole number above 0 from the environment, or `otherwise`.
int CountFromEnvironment(const char* name, int otherwise);

// Random choices that depend on the seed and on `number` alone, so that one
// case can be repeated without those before it.
class Chance {
 public:
  explicit Chance(uint32_t number) : engine_(TestSeed() * 1000003U + number) {}

  // From `low` to `high`, both included.
  int Between(int low, int high) {
    // No std distribution: they differ from library to library.
    return low + static_cast<int>(engine_() % (high - low + 1U));
  }
  bool OneIn(int n) { return Between(1, n) == 1; }

 private:
  std::mt19937 engine_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_CHANCE_H_
