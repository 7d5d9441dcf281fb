// The standard message encoding, value by value, against bytes made by hand.
#include <gmock/gmock.h>

#include <cmath>

#include "codec_fixture.h"
#include "vectors.h"

namespace {

class CodecVectorTest : public CodecTest,
                        public testing::WithParamInterface<Vector> {};

TEST_P(CodecVectorTest, ValueIsTheseBytes) {
  const Value value(GetParam().make());
  EXPECT_EQ(Encode(value.get()), GetParam().octets);
}

TEST_P(CodecVectorTest, BytesAreThisValue) {
  const Value expected(GetParam().make());
  const Value value = Decode(GetParam().octets);
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(fl_value_equal(value.get(), expected.get()))
      << "expected " << text_of(expected.get()) << "\nactual   "
      << text_of(value.get());
}

// A message is often a slice of something larger; only its own start counts.
TEST_P(CodecVectorTest, BytesAreThisValueAtOddAddresses) {
  const Value expected(GetParam().make());
  const Owned<GBytes> shifted = to_bytes(Octets{99} + GetParam().octets);
  const Owned<GBytes> message(
      g_bytes_new_from_bytes(shifted.get(), 1, GetParam().octets.size()));
  const Value value(
      fl_message_codec_decode_message(codec_, message.get(), nullptr));
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(fl_value_equal(value.get(), expected.get()));
}

INSTANTIATE_TEST_SUITE_P(Of, CodecVectorTest, testing::ValuesIn(vectors()),
                         [](const auto& vector) { return vector.param.name; });

using CodecTableTest = CodecTest;

TEST_F(CodecTableTest, NoValueIsEncodedAsNull) {
  EXPECT_EQ(Encode(nullptr), (Octets{0}));
}

TEST_F(CodecTableTest, AnEmptyMessageIsANullValue) {
  const Value value = Decode({});
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(fl_value_get_type(value.get()), FL_VALUE_TYPE_NULL);
}

TEST_F(CodecTableTest, NoBytesInsideAMessageAreNoValue) {
  const Owned<GBytes> nothing = to_bytes({});
  size_t offset = 0;
  g_autoptr(GError) error = nullptr;
  EXPECT_EQ(fl_standard_message_codec_read_value(standard_.get(), nothing.get(),
                                                 &offset, &error),
            nullptr);
  EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA);
}

TEST_F(CodecTableTest, NanKeepsItsBits) {
  // A quiet NaN with a payload: 7FF8000000000123.
  const Octets nan =
      Octets{6} + repeat(7, 0) + Octets{0x23, 0x01, 0, 0, 0, 0, 0xf8, 0x7f};
  const Value value = Decode(nan);
  ASSERT_NE(value, nullptr);
  EXPECT_TRUE(std::isnan(fl_value_get_float(value.get())));
  EXPECT_EQ(Encode(value.get()), nan);
}

TEST_F(CodecTableTest, NegativeZeroKeepsItsSign) {
  const Value value(fl_value_new_float(-0.0));
  EXPECT_EQ(Encode(value.get()), Octets{6} + repeat(7 + 7, 0) + Octets{0x80});
}

TEST_F(CodecTableTest, AnInt64OnTheWireMayBeSmall) {
  const Value value = Decode({4, 5, 0, 0, 0, 0, 0, 0, 0});
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(fl_value_get_int(value.get()), 5);
}

TEST_F(CodecTableTest, PaddingIsSkippedWhateverItHolds) {
  const Value value = Decode({9, 1, 0xaa, 0xbb, 7, 0, 0, 0});
  ASSERT_NE(value, nullptr);
  ASSERT_EQ(fl_value_get_length(value.get()), 1u);
  EXPECT_EQ(fl_value_get_int32_list(value.get())[0], 7);
}

TEST_F(CodecTableTest, TextFromTheWireEndsAtItsFirstNul) {
  const Value value = Decode({7, 3, 'a', 0, 'b'});
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(fl_value_get_string(value.get()), "a");
}

TEST_F(CodecTableTest, TextFromTheWireIsNotCheckedForUtf8) {
  const Octets broken = {7, 2, 0xff, 0xfe};
  const Value value = Decode(broken);
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(fl_value_get_string(value.get()), "\xff\xfe");
  EXPECT_EQ(Encode(value.get()), broken);
}

TEST_F(CodecTableTest, AmongDuplicateKeysTheLastWinsAtTheFirstsPlace) {
  // {a: 1, b: 2, a: null}
  const Value value = Decode({13, 3, 7,   1, 'a', 3, 1, 0, 0, 0,  //
                              7,  1, 'b', 3, 2,   0, 0, 0,        //
                              7,  1, 'a', 0});
  ASSERT_NE(value, nullptr);
  EXPECT_EQ(text_of(value.get()), "{a: null, b: 2}");
}

TEST_F(CodecTableTest, CustomValuesHaveNoEncoding) {
  const Value custom(fl_value_new_custom(7, nullptr, nullptr));
  const Value list(fl_value_new_list());
  fl_value_append(list.get(), custom.get());
  EXPECT_EQ(TryEncode(custom.get()).outcome.code,
            FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE);
  EXPECT_EQ(TryEncode(list.get()).outcome.code,
            FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE);
}

TEST_F(CodecTableTest, CustomKeysAndValuesOfAMapHaveNoEncodingEither) {
  const Value custom(fl_value_new_custom(7, nullptr, nullptr));
  const Value as_key(fl_value_new_map());
  fl_value_set_take(as_key.get(), fl_value_ref(custom.get()),
                    fl_value_new_null());
  const Value as_value(fl_value_new_map());
  fl_value_set_string(as_value.get(), "k", custom.get());
  EXPECT_EQ(TryEncode(as_key.get()).outcome.code,
            FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE);
  EXPECT_EQ(TryEncode(as_value.get()).outcome.code,
            FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE);
}

}  // namespace
