// The first frame is found where the plugin's own scan would find it.
#include "looks/first_frame.h"

#include <gtest/gtest.h>

#include <random>

#include "adts/frame.h"
#include "adts/scan.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::first_whole_frame;
using corvane::FirstFrame;
using corvane::RegularFile;

Bytes MakeFrame(int frequency_index, int channel_config, size_t payload = 20) {
  const Bytes data(payload, 0x11);
  Bytes frame;
  EXPECT_TRUE(adts::Frame({2, frequency_index, channel_config}, data.data(),
                          data.size(), &frame));
  return frame;
}

class FirstFrameTest : public ::testing::Test {
 protected:
  std::optional<FirstFrame> Find(const Bytes& content) {
    WriteFile(path_, content);
    return first_whole_frame(RegularFile(path_));
  }

  // Whether the scan of the file written last found any frame.
  bool ScanFindsOne() const {
    const RegularFile file(path_);
    adts::Scan scan = {};
    EXPECT_EQ(adts::ScanFile(file.fd(), &scan), 0);
    return scan.samples > 0;
  }

  TempDir dir_;
  const std::string path_ = dir_.Path("capture.aac");
};

TEST_F(FirstFrameTest, TheFormatIsTheHeaders) {
  for (int index = 0; index < 13; ++index) {
    for (int config = 0; config < 8; ++config) {
      const auto frame = Find(MakeFrame(index, config));
      ASSERT_TRUE(frame) << index << " " << config;
      EXPECT_EQ(frame->offset, 0);
      EXPECT_EQ(frame->format.sample_rate,
                adts::kSamplingFrequencies[static_cast<size_t>(index)]);
      EXPECT_EQ(frame->format.channels, config == 7 ? 8 : config);
    }
  }
}

TEST_F(FirstFrameTest, ATornFrameAtTheStartHidesAllBehindIt) {
  Bytes torn = MakeFrame(3, 1, 5000);
  torn.resize(100);
  EXPECT_FALSE(Find(Concat(torn, MakeFrame(4, 2))));
  EXPECT_FALSE(ScanFindsOne());
}

TEST_F(FirstFrameTest, BehindForeignBytesAFrameNeedsASecondOrTheEnd) {
  const Bytes foreign(70000, 'x');
  const Bytes frame = MakeFrame(4, 2);
  EXPECT_EQ(Find(Concat(foreign, frame))->offset, 70000);
  EXPECT_EQ(Find(Concat(Concat(foreign, frame), frame))->offset, 70000);
  EXPECT_FALSE(Find(Concat(Concat(foreign, frame), {1, 2, 3})));
}

// The pieces that captures in trouble are made of, in any order.
TEST_F(FirstFrameTest, AgreesWithTheScanOnRandomFiles) {
  const uint32_t seed = TestSeed();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const std::vector<Bytes> pieces = {MakeFrame(3, 1),
                                     MakeFrame(4, 2, 300),
                                     MakeFrame(11, 7, 1),
                                     Slice(MakeFrame(3, 1), 0, 9),
                                     Slice(MakeFrame(3, 1), 0, 3),
                                     Bytes(1, 0xFF),
                                     Bytes(2, 0xFF),
                                     Bytes(5, 0),
                                     Bytes(65530, 'x'),
                                     {0xFF, 0xF1, 0x50}};
  int found = 0;
  for (int run = 0; run < 500; ++run) {
    Bytes content;
    for (unsigned left = random() % 5 + 1; left > 0; --left) {
      content = Concat(content, pieces[random() % pieces.size()]);
    }
    const auto frame = Find(content);
    ASSERT_EQ(frame.has_value(), ScanFindsOne())
        << testing::PrintToString(Slice(content, 0, 400));
    if (!frame) continue;
    ++found;
    // From there on nothing has to be skipped to find it, and before it there
    // is none.
    const auto offset = static_cast<size_t>(frame->offset);
    EXPECT_EQ(Find(Slice(content, offset))->offset, 0);
  }
  EXPECT_GT(found, 100);
}

}  // namespace
}  // namespace corvane_test
