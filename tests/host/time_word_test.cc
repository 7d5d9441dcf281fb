#include "commands/time_word.h"

#include <gtest/gtest.h>

#include <map>

namespace corvane_test {
namespace {

TEST(TimeWordTest, SecondsUnitsAndClocksAreUnderstood) {
  const std::map<std::string, int64_t> expected = {
      {"90", 90'000'000},
      {"2.5", 2'500'000},
      {"0", 0},
      {"5m", 300'000'000},
      {"1.5h", 5'400'000'000},
      {"30s", 30'000'000},
      {"1:30", 90'000'000},
      {"1:30:00", 5'400'000'000},
      {"90:00", 5'400'000'000},
      {"0:00.25", 250'000},
      {"1000h", 3'600'000'000'000},
  };
  for (const auto& [word, us] : expected) {
    EXPECT_EQ(corvane::parse_time_word(word), us) << word;
  }
}

TEST(TimeWordTest, OtherWordsAreNone) {
  for (const char* word : {"",
                           "-1",
                           "+1",
                           "nan",
                           "inf",
                           "1e9",
                           "0x10",
                           "5 m",
                           "m",
                           "5d",
                           ":30",
                           "1:",
                           "1:60",
                           "1.5:00",
                           "1:2:3:4",
                           "1001h",
                           "99999999999999999999999",
                           "1..5",
                           "5mm",
                           " 5"}) {
    EXPECT_EQ(corvane::parse_time_word(word), std::nullopt) << word;
  }
}

}  // namespace
}  // namespace corvane_test
