#include "take/loss_line.h"

#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kUsPerMs = 1000;
constexpr int64_t kLongMs = 10000;

std::string length_of(const Loss& loss) {
  const int64_t ms = loss.lost_us / kUsPerMs;
  return ms < kLongMs ? std::to_string(ms) + " ms" : clock_tenths(ms);
}

const char* reason_of(const Loss& loss) {
  switch (loss.cause) {
    case LossCause::kOverrun:
      return "the device's buffer ran over";
    case LossCause::kSuspend:
      return "the device was suspended";
    case LossCause::kUnreported:
      return "it never came from the device or its sound server";
  }
  return "";  // not reached: every cause is above
}

}  // namespace

std::string line_of(const Loss& loss) {
  return "warning: " + length_of(loss) + " of sound are missing after " +
         clock_tenths(loss.after_us / kUsPerMs) +
         " of listening: " + reason_of(loss) + "; the take goes on";
}

}  // namespace corvane
