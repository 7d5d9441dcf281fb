// A buffer, as the tests pass PCM and file contents around.
#ifndef CORVANE_TESTS_SUPPORT_BYTES_H_
#define CORVANE_TESTS_SUPPORT_BYTES_H_

#include <cstdint>
#include <vector>

namespace corvane_test {

using Bytes = std::vector<uint8_t>;

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_BYTES_H_
