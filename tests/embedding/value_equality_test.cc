// When two values are the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "handles.h"
#include "log_capture.h"
#include "vectors.h"

namespace {

// Compares two values that it takes; equality must not depend on the side.
bool equal(FlValue* a, FlValue* b) {
  const Value first(a);
  const Value second(b);
  const bool result = fl_value_equal(a, b);
  EXPECT_EQ(fl_value_equal(b, a), result);
  return result;
}

FlValue* map_of(const std::vector<std::pair<const char*, int>>& entries) {
  FlValue* map = fl_value_new_map();
  for (auto [key, value] : entries) {
    fl_value_set_string_take(map, key, fl_value_new_int(value));
  }
  return map;
}

FlValue* list_of(const std::vector<int>& elements) {
  FlValue* list = fl_value_new_list();
  for (int element : elements) {
    fl_value_append_take(list, fl_value_new_int(element));
  }
  return list;
}

class EqualityTest : public testing::Test {
 protected:
  LogCapture logs_;
};

// Every pair of the vectors, all of which differ.
TEST_F(EqualityTest, EachValueEqualsItsTwinAndNoOther) {
  const auto& all = vectors();
  for (size_t i = 0; i < all.size(); ++i) {
    for (size_t j = 0; j < all.size(); ++j) {
      EXPECT_EQ(equal(all[i].make(), all[j].make()), i == j)
          << all[i].name << " and " << all[j].name;
    }
  }
}

TEST_F(EqualityTest, NumbersOfDifferentTypesDiffer) {
  EXPECT_FALSE(equal(fl_value_new_int(1), fl_value_new_float(1)));
  EXPECT_FALSE(equal(fl_value_new_int(1), fl_value_new_bool(true)));
  const int32_t one32 = 1;
  const int64_t one64 = 1;
  EXPECT_FALSE(equal(fl_value_new_int32_list(&one32, 1),
                     fl_value_new_int64_list(&one64, 1)));
  EXPECT_FALSE(equal(fl_value_new_int64_list(&one64, 1), list_of({1})));
}

TEST_F(EqualityTest, ZerosOfEitherSignAreEqual) {
  EXPECT_TRUE(equal(fl_value_new_float(0.0), fl_value_new_float(-0.0)));
}

TEST_F(EqualityTest, NanEqualsNothingNotEvenItself) {
  const Value nan(fl_value_new_float(NAN));
  EXPECT_FALSE(fl_value_equal(nan.get(), nan.get()));
  const double element = NAN;
  const Value nans(fl_value_new_float_list(&element, 1));
  EXPECT_FALSE(fl_value_equal(nans.get(), nans.get()));
}

TEST_F(EqualityTest, ListsCompareInOrder) {
  EXPECT_TRUE(equal(list_of({1, 2}), list_of({1, 2})));
  EXPECT_FALSE(equal(list_of({1, 2}), list_of({2, 1})));
  EXPECT_FALSE(equal(list_of({1, 2}), list_of({1, 2, 3})));
}

TEST_F(EqualityTest, MapsCompareWithoutOrder) {
  EXPECT_TRUE(
      equal(map_of({{"a", 1}, {"b", 2}}), map_of({{"b", 2}, {"a", 1}})));
}

TEST_F(EqualityTest, MapsDifferInAKeyAValueOrTheirNumber) {
  EXPECT_FALSE(equal(map_of({{"a", 1}}), map_of({{"b", 1}})));
  EXPECT_FALSE(equal(map_of({{"a", 1}}), map_of({{"a", 2}})));
  EXPECT_FALSE(equal(map_of({{"a", 1}}), map_of({{"a", 1}, {"b", 2}})));
}

TEST_F(EqualityTest, CustomValuesAreNeverEqual) {
  const int content = 0;
  const Value custom(fl_value_new_custom(1, &content, nullptr));
  EXPECT_FALSE(fl_value_equal(custom.get(), custom.get()));
  EXPECT_FALSE(equal(fl_value_new_custom(1, &content, nullptr),
                     fl_value_new_custom(1, &content, nullptr)));
}

}  // namespace
