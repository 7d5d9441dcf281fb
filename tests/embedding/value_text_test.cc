// Values as text.
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>

#include "handles.h"
#include "log_capture.h"

namespace {

class ValueTextTest : public testing::Test {
 protected:
  // The text of a value that it takes.
  static std::string Text(FlValue* value) {
    const Value owned(value);
    return text_of(value);
  }

  LogCapture logs_;
};

TEST_F(ValueTextTest, Scalars) {
  EXPECT_EQ(Text(fl_value_new_null()), "null");
  EXPECT_EQ(Text(fl_value_new_bool(true)), "true");
  EXPECT_EQ(Text(fl_value_new_bool(false)), "false");
  EXPECT_EQ(Text(fl_value_new_int(0)), "0");
  EXPECT_EQ(Text(fl_value_new_int(std::numeric_limits<int64_t>::min())),
            "-9223372036854775808");
}

TEST_F(ValueTextTest, StringsAreNotQuoted) {
  EXPECT_EQ(Text(fl_value_new_string("take \"1\"")), "take \"1\"");
  EXPECT_EQ(Text(fl_value_new_string("")), "");
}

TEST_F(ValueTextTest, FloatsAreTrimmedToAtLeastOneDecimal) {
  EXPECT_EQ(Text(fl_value_new_float(0)), "0.0");
  EXPECT_EQ(Text(fl_value_new_float(1)), "1.0");
  EXPECT_EQ(Text(fl_value_new_float(-100)), "-100.0");
  EXPECT_EQ(Text(fl_value_new_float(0.5)), "0.5");
  EXPECT_EQ(Text(fl_value_new_float(10.25)), "10.25");
  EXPECT_EQ(Text(fl_value_new_float(-0.125)), "-0.125");
}

TEST_F(ValueTextTest, FloatsHaveSixteenDecimals) {
  EXPECT_EQ(Text(fl_value_new_float(1.0 / 3)), "0.3333333333333333");
  EXPECT_EQ(Text(fl_value_new_float(1e-20)), "0.0");
}

TEST_F(ValueTextTest, TheLargestFloatIsWrittenOut) {
  const std::string text =
      Text(fl_value_new_float(std::numeric_limits<double>::lowest()));
  EXPECT_EQ(text.size(), 1 + 309 + 2u);
  EXPECT_EQ(text.substr(0, 8), "-1797693");
  EXPECT_EQ(text.substr(text.size() - 2), ".0");
}

TEST_F(ValueTextTest, FloatsThatAreNoNumbers) {
  EXPECT_EQ(Text(fl_value_new_float(HUGE_VAL)), "inf");
  EXPECT_EQ(Text(fl_value_new_float(-HUGE_VAL)), "-inf");
}

TEST_F(ValueTextTest, TypedLists) {
  const uint8_t octets[] = {0, 127, 255};
  const int32_t ints32[] = {-1, 2};
  const int64_t ints64[] = {int64_t{1} << 40};
  const float floats32[] = {0.5f, 2};
  const double floats64[] = {-1, 0.25};
  EXPECT_EQ(Text(fl_value_new_uint8_list(octets, 3)), "[0, 127, 255]");
  EXPECT_EQ(Text(fl_value_new_uint8_list(nullptr, 0)), "[]");
  EXPECT_EQ(Text(fl_value_new_int32_list(ints32, 2)), "[-1, 2]");
  EXPECT_EQ(Text(fl_value_new_int64_list(ints64, 1)), "[1099511627776]");
  EXPECT_EQ(Text(fl_value_new_float32_list(floats32, 2)), "[0.5, 2.0]");
  EXPECT_EQ(Text(fl_value_new_float_list(floats64, 2)), "[-1.0, 0.25]");
}

TEST_F(ValueTextTest, ContainersShowWhatTheyHold) {
  FlValue* inner = fl_value_new_list();
  fl_value_append_take(inner, fl_value_new_string("a"));
  fl_value_append_take(inner, fl_value_new_null());
  FlValue* map = fl_value_new_map();
  fl_value_set_string_take(map, "list", inner);
  fl_value_set_take(map, fl_value_new_int(1), fl_value_new_map());
  EXPECT_EQ(Text(map), "{list: [a, null], 1: {}}");
}

}  // namespace
