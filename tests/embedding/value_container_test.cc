// Lists and maps of values: who owns what, order, and replacing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handles.h"
#include "log_capture.h"

namespace {

using testing::ElementsAre;

// A value that counts the end of its life.
FlValue* counted(int* freed) {
  return fl_value_new_custom(
      0, freed, [](gpointer count) { ++*static_cast<int*>(count); });
}

class ContainerTest : public testing::Test {
 protected:
  // Sets an entry with a string key and an int value.
  void Set(const char* key, int64_t value) {
    fl_value_set_string_take(map_.get(), key, fl_value_new_int(value));
  }

  LogCapture logs_;
  Value list_{fl_value_new_list()};
  Value map_{fl_value_new_map()};
};

TEST_F(ContainerTest, AListKeepsTheOrderOfItsElements) {
  for (int i = 0; i < 3; ++i) {
    fl_value_append_take(list_.get(), fl_value_new_int(i * 10));
  }
  EXPECT_EQ(fl_value_get_length(list_.get()), 3u);
  EXPECT_EQ(fl_value_get_int(fl_value_get_list_value(list_.get(), 2)), 20);
  EXPECT_EQ(text_of(list_.get()), "[0, 10, 20]");
}

TEST_F(ContainerTest, AppendTakesItsOwnReference) {
  int freed = 0;
  Value child(counted(&freed));
  fl_value_append(list_.get(), child.get());
  list_.reset();
  EXPECT_EQ(freed, 0);
  child.reset();
  EXPECT_EQ(freed, 1);
}

TEST_F(ContainerTest, AppendTakeConsumesTheReference) {
  int freed = 0;
  fl_value_append_take(list_.get(), counted(&freed));
  EXPECT_EQ(freed, 0);
  list_.reset();
  EXPECT_EQ(freed, 1);
}

TEST_F(ContainerTest, AListOfStringsComesFromAnArray) {
  const gchar* const strings[] = {"a", "", "c", nullptr};
  const Value list(fl_value_new_list_from_strv(strings));
  EXPECT_EQ(fl_value_get_length(list.get()), 3u);
  EXPECT_STREQ(fl_value_get_string(fl_value_get_list_value(list.get(), 2)),
               "c");
}

TEST_F(ContainerTest, SetTakesItsOwnReferences) {
  int keys_freed = 0;
  int values_freed = 0;
  Value key(counted(&keys_freed));
  Value value(counted(&values_freed));
  fl_value_set(map_.get(), key.get(), value.get());
  fl_value_set_string(map_.get(), "k", value.get());
  map_.reset();
  EXPECT_EQ(keys_freed, 0);
  EXPECT_EQ(values_freed, 0);
  key.reset();
  value.reset();
  EXPECT_EQ(keys_freed, 1);
  EXPECT_EQ(values_freed, 1);
}

TEST_F(ContainerTest, SetTakeConsumesKeyAndValue) {
  int freed = 0;
  fl_value_set_take(map_.get(), counted(&freed), counted(&freed));
  fl_value_set_string_take(map_.get(), "k", counted(&freed));
  EXPECT_EQ(freed, 0);
  map_.reset();
  EXPECT_EQ(freed, 3);
}

TEST_F(ContainerTest, AMapKeepsTheOrderOfInsertion) {
  Set("z", 1);
  Set("a", 2);
  Set("m", 3);
  EXPECT_EQ(fl_value_get_length(map_.get()), 3u);
  EXPECT_STREQ(fl_value_get_string(fl_value_get_map_key(map_.get(), 1)), "a");
  EXPECT_EQ(fl_value_get_int(fl_value_get_map_value(map_.get(), 2)), 3);
  EXPECT_EQ(text_of(map_.get()), "{z: 1, a: 2, m: 3}");
}

TEST_F(ContainerTest, AnEqualKeyIsReplacedAtItsPlace) {
  Set("z", 1);
  Set("a", 2);
  Set("z", 3);
  EXPECT_EQ(text_of(map_.get()), "{z: 3, a: 2}");
}

TEST_F(ContainerTest, ReplacingLetsGoTheFormerValue) {
  int freed = 0;
  fl_value_set_string_take(map_.get(), "k", counted(&freed));
  Set("k", 1);
  EXPECT_EQ(freed, 1);
}

TEST_F(ContainerTest, ReplacingReplacesTheKeyObjectToo) {
  FlValue* first = fl_value_new_string("k");
  FlValue* second = fl_value_new_string("k");
  fl_value_set_take(map_.get(), first, fl_value_new_null());
  fl_value_set_take(map_.get(), second, fl_value_new_null());
  ASSERT_EQ(fl_value_get_length(map_.get()), 1u);
  EXPECT_EQ(fl_value_get_map_key(map_.get(), 0), second);
}

TEST_F(ContainerTest, KeysOfAnotherTypeAreOtherKeys) {
  Set("1", 1);
  fl_value_set_take(map_.get(), fl_value_new_int(1), fl_value_new_int(2));
  fl_value_set_take(map_.get(), fl_value_new_float(1), fl_value_new_int(3));
  fl_value_set_take(map_.get(), fl_value_new_bool(true), fl_value_new_int(4));
  EXPECT_EQ(fl_value_get_length(map_.get()), 4u);
}

TEST_F(ContainerTest, LookupFindsAnEqualKeyAndBorrows) {
  Set("a", 1);
  Set("b", 2);
  const Value key(fl_value_new_string("b"));
  FlValue* found = fl_value_lookup(map_.get(), key.get());
  EXPECT_EQ(found, fl_value_get_map_value(map_.get(), 1));
  EXPECT_EQ(fl_value_lookup_string(map_.get(), "b"), found);
}

TEST_F(ContainerTest, LookupOfAnAbsentKeyIsNullAndSilent) {
  Set("a", 1);
  const Value key(fl_value_new_int(1));
  EXPECT_EQ(fl_value_lookup(map_.get(), key.get()), nullptr);
  EXPECT_EQ(fl_value_lookup_string(map_.get(), "b"), nullptr);
}

TEST_F(ContainerTest, LookupByTextFindsOnlyStrings) {
  const Octets octets = {'k'};
  fl_value_set_take(map_.get(), fl_value_new_uint8_list(octets.data(), 1),
                    fl_value_new_null());
  EXPECT_EQ(fl_value_lookup_string(map_.get(), "k"), nullptr);
}

TEST_F(ContainerTest, LookupOutsideAMapIsACritical) {
  EXPECT_EQ(fl_value_lookup_string(list_.get(), "a"), nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_lookup_string")));
  EXPECT_EQ(fl_value_lookup(list_.get(), map_.get()), nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_lookup")));
}

TEST_F(ContainerTest, FillingAnotherTypeIsACriticalAndChangesNothing) {
  const Value child(fl_value_new_null());
  fl_value_append(map_.get(), child.get());
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_append")));
  fl_value_set(list_.get(), child.get(), child.get());
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_set")));
  fl_value_set_string(list_.get(), "k", child.get());
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_set_string")));
  EXPECT_EQ(text_of(list_.get()), "[]");
  EXPECT_EQ(text_of(map_.get()), "{}");
}

}  // namespace
