// What a user reads when a flush has failed: that the disk may lack what can
// still be read.
#include "take/take_report.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "engine/file_descriptor.h"
#include "host/record_fixture.h"
#include "support/files.h"

namespace corvane_test {
namespace {

TEST(TakeReportTest, AFailedFlushLeavesDoubtAboutWhatIsBehindTheLastGoodOne) {
  const TempDir dir;
  const std::string path = dir.Path("take.aac");
  const corvane::FileDescriptor log(
      open(dir.Path("log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  corvane::Console console(log.get());
  corvane::TakeOptions options;
  options.capture_path = path;
  corvane::TakeResult take;
  take.started = true;
  take.end = corvane::TakeEnd::kError;
  take.error = {"WRITE_FAILED", "flush failed: Input/output error", "errno",
                EIO, path};
  take.sealed.emplace().duration_ms = 61234;
  const auto source = corvane::open_raw_input(-1, {48000, 1}, false);

  EXPECT_TRUE(corvane::report_problems(options, *source, take, &console));
  const Bytes said = ReadFile(dir.Path("log"));
  EXPECT_EQ(
      Lines(std::string(said.begin(), said.end())),
      Words({"corvane: " + path +
                 ": flush failed: Input/output error; what lies behind the "
                 "last flush that succeeded may not be on the disk",
             "corvane: " + path +
                 ": the capture is whole up to 1:01.2 and sealed",
             "corvane: name a file in another folder, or on another disk; "
             "then continue it with: corvane resume '" +
                 path + "' -i REST"}));
}

}  // namespace
}  // namespace corvane_test
