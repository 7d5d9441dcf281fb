// libavcodec talks to standard error through a level of the whole process,
// which belongs to the application: here, to the tests.
#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

namespace corvane_test {
namespace {

class QuietLibav : public testing::Environment {
 public:
  void SetUp() override { av_log_set_level(AV_LOG_QUIET); }
};

const testing::Environment* const quiet_libav =
    testing::AddGlobalTestEnvironment(new QuietLibav);

}  // namespace
}  // namespace corvane_test
