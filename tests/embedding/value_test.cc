// FlValue: what goes in comes out, references, and asking for the wrong type.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "handles.h"
#include "log_capture.h"
#include "vectors.h"

namespace {

using testing::ElementsAre;

class ValueTest : public testing::Test {
 protected:
  LogCapture logs_;
};

TEST_F(ValueTest, ScalarsGiveBackWhatTheyWereMadeOf) {
  const Value null(fl_value_new_null());
  const Value yes(fl_value_new_bool(true));
  const Value integer(fl_value_new_int(std::numeric_limits<int64_t>::min()));
  const Value real(fl_value_new_float(-0.25));
  EXPECT_EQ(fl_value_get_type(null.get()), FL_VALUE_TYPE_NULL);
  EXPECT_EQ(fl_value_get_type(yes.get()), FL_VALUE_TYPE_BOOL);
  EXPECT_TRUE(fl_value_get_bool(yes.get()));
  EXPECT_EQ(fl_value_get_type(integer.get()), FL_VALUE_TYPE_INT);
  EXPECT_EQ(fl_value_get_int(integer.get()),
            std::numeric_limits<int64_t>::min());
  EXPECT_EQ(fl_value_get_type(real.get()), FL_VALUE_TYPE_FLOAT);
  EXPECT_EQ(fl_value_get_float(real.get()), -0.25);
}

TEST_F(ValueTest, TextIsCopied) {
  std::string text = "take";
  const Value value(fl_value_new_string(text.c_str()));
  text[0] = 'l';
  EXPECT_EQ(fl_value_get_type(value.get()), FL_VALUE_TYPE_STRING);
  EXPECT_STREQ(fl_value_get_string(value.get()), "take");
}

TEST_F(ValueTest, SizedTextIsAsLongAsSaidAndTerminated) {
  const Value part(fl_value_new_string_sized("take 1", 4));
  const Value none(fl_value_new_string_sized("take", 0));
  const Value null(fl_value_new_string_sized(nullptr, 0));
  EXPECT_STREQ(fl_value_get_string(part.get()), "take");
  EXPECT_STREQ(fl_value_get_string(none.get()), "");
  EXPECT_STREQ(fl_value_get_string(null.get()), "");
}

TEST_F(ValueTest, SizedTextEndsAtItsFirstNul) {
  const Value value(fl_value_new_string_sized("a\0b", 3));
  const Value expected(fl_value_new_string("a"));
  EXPECT_STREQ(fl_value_get_string(value.get()), "a");
  EXPECT_TRUE(fl_value_equal(value.get(), expected.get()));
}

TEST_F(ValueTest, TypedListsAreCopied) {
  uint8_t octets[] = {1, 2, 255};
  int32_t ints32[] = {-1, 2};
  int64_t ints64[] = {-1, int64_t{1} << 40};
  float floats32[] = {0.5f};
  double floats64[] = {0.25, -8};
  const Value u8(fl_value_new_uint8_list(octets, 3));
  const Value i32(fl_value_new_int32_list(ints32, 2));
  const Value i64(fl_value_new_int64_list(ints64, 2));
  const Value f32(fl_value_new_float32_list(floats32, 1));
  const Value f64(fl_value_new_float_list(floats64, 2));
  octets[2] = ints32[1] = ints64[1] = floats32[0] = floats64[1] = 77;

  EXPECT_EQ(fl_value_get_length(u8.get()), 3u);
  EXPECT_EQ(fl_value_get_uint8_list(u8.get())[2], 255);
  EXPECT_EQ(fl_value_get_length(i32.get()), 2u);
  EXPECT_EQ(fl_value_get_int32_list(i32.get())[1], 2);
  EXPECT_EQ(fl_value_get_length(i64.get()), 2u);
  EXPECT_EQ(fl_value_get_int64_list(i64.get())[1], int64_t{1} << 40);
  EXPECT_EQ(fl_value_get_length(f32.get()), 1u);
  EXPECT_EQ(fl_value_get_float32_list(f32.get())[0], 0.5f);
  EXPECT_EQ(fl_value_get_length(f64.get()), 2u);
  EXPECT_EQ(fl_value_get_float_list(f64.get())[1], -8);
}

TEST_F(ValueTest, AUint8ListComesFromBytesToo) {
  const Value value(fl_value_new_uint8_list_from_bytes(to_bytes({4, 5}).get()));
  ASSERT_EQ(fl_value_get_length(value.get()), 2u);
  EXPECT_EQ(fl_value_get_uint8_list(value.get())[1], 5);
}

TEST_F(ValueTest, AnEmptyUint8ListHasANullPointer) {
  const uint8_t octet = 1;
  const Value from_null(fl_value_new_uint8_list(nullptr, 0));
  const Value from_data(fl_value_new_uint8_list(&octet, 0));
  const Value from_bytes(
      fl_value_new_uint8_list_from_bytes(to_bytes({}).get()));
  for (FlValue* empty : {from_null.get(), from_data.get(), from_bytes.get()}) {
    EXPECT_EQ(fl_value_get_length(empty), 0u);
    EXPECT_EQ(fl_value_get_uint8_list(empty), nullptr);
  }
}

TEST_F(ValueTest, TheLastReferenceFrees) {
  int freed = 0;
  FlValue* value = fl_value_new_custom(
      1, &freed, [](gpointer count) { ++*static_cast<int*>(count); });
  EXPECT_EQ(fl_value_ref(value), value);
  fl_value_unref(value);
  EXPECT_EQ(freed, 0);
  fl_value_unref(value);
  EXPECT_EQ(freed, 1);
}

TEST_F(ValueTest, AutoptrDropsItsReference) {
  int freed = 0;
  {
    g_autoptr(FlValue) value = fl_value_new_custom(
        1, &freed, [](gpointer count) { ++*static_cast<int*>(count); });
    EXPECT_EQ(freed, 0) << value;
  }
  EXPECT_EQ(freed, 1);
}

TEST_F(ValueTest, ACustomValueCarriesTypeAndPointer) {
  const int content = 3;
  const Value value(fl_value_new_custom(-7, &content, nullptr));
  EXPECT_EQ(fl_value_get_type(value.get()), FL_VALUE_TYPE_CUSTOM);
  EXPECT_EQ(fl_value_get_custom_type(value.get()), -7);
  EXPECT_EQ(fl_value_get_custom_value(value.get()), &content);
}

TEST_F(ValueTest, ACustomObjectIsReferenced) {
  GObject* object = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
  Value value(fl_value_new_custom_object(5, object));
  EXPECT_EQ(object->ref_count, 2u);
  EXPECT_EQ(fl_value_get_custom_type(value.get()), 5);
  EXPECT_EQ(fl_value_get_custom_value_object(value.get()), object);
  value.reset();
  EXPECT_EQ(object->ref_count, 1u);
  g_object_unref(object);
}

TEST_F(ValueTest, ACustomObjectTakenIsTheValues) {
  GObject* object = G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr));
  g_object_add_weak_pointer(object, reinterpret_cast<gpointer*>(&object));
  Value value(fl_value_new_custom_object_take(5, object));
  EXPECT_EQ(object->ref_count, 1u);
  value.reset();
  EXPECT_EQ(object, nullptr);
}

// Every getter with the one or two types that it serves.
struct Getter {
  const char* name;
  std::vector<FlValueType> types;
  std::function<bool(FlValue*)> gives_nothing;
};

const Getter kGetters[] = {
    {"fl_value_get_bool",
     {FL_VALUE_TYPE_BOOL},
     [](FlValue* v) { return !fl_value_get_bool(v); }},
    {"fl_value_get_int",
     {FL_VALUE_TYPE_INT},
     [](FlValue* v) { return fl_value_get_int(v) == 0; }},
    {"fl_value_get_float",
     {FL_VALUE_TYPE_FLOAT},
     [](FlValue* v) { return fl_value_get_float(v) == 0.0; }},
    {"fl_value_get_string",
     {FL_VALUE_TYPE_STRING},
     [](FlValue* v) { return fl_value_get_string(v) == nullptr; }},
    {"fl_value_get_uint8_list",
     {FL_VALUE_TYPE_UINT8_LIST},
     [](FlValue* v) { return fl_value_get_uint8_list(v) == nullptr; }},
    {"fl_value_get_int32_list",
     {FL_VALUE_TYPE_INT32_LIST},
     [](FlValue* v) { return fl_value_get_int32_list(v) == nullptr; }},
    {"fl_value_get_int64_list",
     {FL_VALUE_TYPE_INT64_LIST},
     [](FlValue* v) { return fl_value_get_int64_list(v) == nullptr; }},
    {"fl_value_get_float32_list",
     {FL_VALUE_TYPE_FLOAT32_LIST},
     [](FlValue* v) { return fl_value_get_float32_list(v) == nullptr; }},
    {"fl_value_get_float_list",
     {FL_VALUE_TYPE_FLOAT_LIST},
     [](FlValue* v) { return fl_value_get_float_list(v) == nullptr; }},
    {"fl_value_get_length",
     {FL_VALUE_TYPE_UINT8_LIST, FL_VALUE_TYPE_INT32_LIST,
      FL_VALUE_TYPE_INT64_LIST, FL_VALUE_TYPE_FLOAT_LIST, FL_VALUE_TYPE_LIST,
      FL_VALUE_TYPE_MAP, FL_VALUE_TYPE_FLOAT32_LIST},
     [](FlValue* v) { return fl_value_get_length(v) == 0; }},
    {"fl_value_get_list_value",
     {FL_VALUE_TYPE_LIST},
     [](FlValue* v) { return fl_value_get_list_value(v, 0) == nullptr; }},
    {"fl_value_get_map_key",
     {FL_VALUE_TYPE_MAP},
     [](FlValue* v) { return fl_value_get_map_key(v, 0) == nullptr; }},
    {"fl_value_get_map_value",
     {FL_VALUE_TYPE_MAP},
     [](FlValue* v) { return fl_value_get_map_value(v, 0) == nullptr; }},
    {"fl_value_get_custom_type",
     {FL_VALUE_TYPE_CUSTOM},
     [](FlValue* v) { return fl_value_get_custom_type(v) == 0; }},
    {"fl_value_get_custom_value",
     {FL_VALUE_TYPE_CUSTOM},
     [](FlValue* v) { return fl_value_get_custom_value(v) == nullptr; }},
};

bool serves(const Getter& getter, FlValueType type) {
  return std::find(getter.types.begin(), getter.types.end(), type) !=
         getter.types.end();
}

TEST_F(ValueTest, AskingForAnotherTypeIsACriticalAndNothing) {
  for (const Vector& vector : vectors()) {
    const Value value(vector.make());
    for (const Getter& getter : kGetters) {
      if (serves(getter, fl_value_get_type(value.get()))) continue;
      EXPECT_TRUE(getter.gives_nothing(value.get()))
          << getter.name << " of " << vector.name;
      EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf(getter.name)))
          << getter.name << " of " << vector.name;
    }
  }
}

}  // namespace
