// What a take's progress makes of what it is told.
#include "take/progress.h"

#include <gtest/gtest.h>

namespace corvane_test {
namespace {}  // namespace
}  // namespace corvane_test
