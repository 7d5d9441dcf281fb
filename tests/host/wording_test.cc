// How figures and paths stand in a sentence.
#include "terminal/wording.h"

#include <gtest/gtest.h>

namespace corvane_test {
namespace {

TEST(WordingTest, TimesHaveTenthsRoundedDown) {
  EXPECT_EQ(corvane::clock_tenths(0), "0:00.0");
  EXPECT_EQ(corvane::clock_tenths(199), "0:00.1");
  EXPECT_EQ(corvane::clock_tenths(723456), "12:03.4");
  EXPECT_EQ(corvane::clock_tenths(3723400), "1:02:03.4");
}

TEST(WordingTest, APathIsOneWordAndNeverAnOption) {
  EXPECT_EQ(corvane::shell_word("a b.aac"), "'a b.aac'");
  EXPECT_EQ(corvane::shell_word("it's"), "'it'\\''s'");
  EXPECT_EQ(corvane::shell_word("-r.aac"), "'./-r.aac'");
}

TEST(WordingTest, OneIsSingular) {
  EXPECT_EQ(corvane::counted(0, "byte"), "0 bytes");
  EXPECT_EQ(corvane::counted(1, "byte"), "1 byte");
  EXPECT_EQ(corvane::counted(2, "byte"), "2 bytes");
}

TEST(WordingTest, AFormatIsChannelsAtARate) {
  EXPECT_EQ(corvane::channels_at({48000, 1}), "1 channel at 48000 Hz");
  EXPECT_EQ(corvane::channels_at({7350, 6}), "6 channels at 7350 Hz");
  EXPECT_EQ(corvane::channels_at({7350, 0}),
            "a channel layout of their own at 7350 Hz");
}

}  // namespace
}  // namespace corvane_test
