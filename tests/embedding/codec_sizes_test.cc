// Sizes on the wire: one byte, 254 and 16 bits, 255 and 32 bits.
#include <gmock/gmock.h>

#include <string>

#include "codec_fixture.h"

namespace {

struct SizeForm {
  uint32_t size;
  Octets octets;
};

std::ostream& operator<<(std::ostream& out, const SizeForm& form) {
  return out << form.size;
}

class SizeFormTest : public CodecTest,
                     public testing::WithParamInterface<SizeForm> {};

TEST_P(SizeFormTest, IsWrittenInTheShortestForm) {
  g_autoptr(GByteArray) buffer = g_byte_array_new();
  fl_standard_message_codec_write_size(standard_.get(), buffer,
                                       GetParam().size);
  EXPECT_EQ(Octets(buffer->data, buffer->data + buffer->len),
            GetParam().octets);
}

TEST_P(SizeFormTest, IsReadAndStepsOver) {
  const Owned<GBytes> bytes = to_bytes(GetParam().octets);
  size_t offset = 0;
  uint32_t size = 0;
  g_autoptr(GError) error = nullptr;
  EXPECT_TRUE(fl_standard_message_codec_read_size(standard_.get(), bytes.get(),
                                                  &offset, &size, &error));
  EXPECT_EQ(size, GetParam().size);
  EXPECT_EQ(offset, GetParam().octets.size());
  EXPECT_EQ(error, nullptr);
}

TEST_P(SizeFormTest, CutShortIsOutOfData) {
  for (size_t length = 0; length < GetParam().octets.size(); ++length) {
    const Owned<GBytes> bytes(g_bytes_new(GetParam().octets.data(), length));
    size_t offset = 0;
    uint32_t size = 0;
    g_autoptr(GError) error = nullptr;
    EXPECT_FALSE(fl_standard_message_codec_read_size(
        standard_.get(), bytes.get(), &offset, &size, &error));
    EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA)
        << "cut to " << length << " bytes";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Of, SizeFormTest,
    testing::Values(SizeForm{0, {0}}, SizeForm{1, {1}}, SizeForm{253, {253}},
                    SizeForm{254, {254, 254, 0}}, SizeForm{255, {254, 255, 0}},
                    SizeForm{256, {254, 0, 1}},
                    SizeForm{0xfffe, {254, 0xfe, 0xff}},
                    SizeForm{0xffff, {254, 0xff, 0xff}},
                    SizeForm{0x10000, {255, 0, 0, 1, 0}},
                    SizeForm{0x01020304, {255, 4, 3, 2, 1}},
                    SizeForm{0xffffffff, {255, 255, 255, 255, 255}}),
    [](const auto& form) { return "Size" + std::to_string(form.param.size); });

// Every boundary of the forms, with the head that a value of that many
// elements has after its type byte.
const SizeForm kBoundaries[] = {{253, {253}},
                                {254, {254, 254, 0}},
                                {0xffff, {254, 0xff, 0xff}},
                                {0x10000, {255, 0, 0, 1, 0}}};

class SizedValueTest : public CodecTest {
 protected:
  // The value is these bytes, and these bytes are the value.
  void ShouldBe(FlValue* value, const Octets& octets) {
    // Not EXPECT_EQ: nobody reads 65536 elements side by side.
    EXPECT_TRUE(Encode(value) == octets);
    const Value decoded = Decode(octets);
    ASSERT_NE(decoded, nullptr);
    EXPECT_TRUE(fl_value_equal(decoded.get(), value));
  }
};

TEST_F(SizedValueTest, StringsOfEverySizeForm) {
  for (const SizeForm& form : kBoundaries) {
    SCOPED_TRACE(form.size);
    const std::string text(form.size, 'x');
    const Value value(fl_value_new_string(text.c_str()));
    ShouldBe(value.get(), Octets{7} + form.octets + repeat(form.size, 'x'));
  }
}

TEST_F(SizedValueTest, Uint8ListsOfEverySizeForm) {
  for (const SizeForm& form : kBoundaries) {
    SCOPED_TRACE(form.size);
    const Octets content = repeat(form.size, 0xa5);
    const Value value(fl_value_new_uint8_list(content.data(), form.size));
    ShouldBe(value.get(), Octets{8} + form.octets + content);
  }
}

// Type byte and size are 2, 4 or 6 bytes; the elements start at a multiple of
// their own size.
TEST_F(SizedValueTest, Int32ListsOfEverySizeForm) {
  const size_t paddings[] = {2, 0, 0, 2};
  for (size_t i = 0; i < std::size(kBoundaries); ++i) {
    const SizeForm& form = kBoundaries[i];
    SCOPED_TRACE(form.size);
    const std::vector<int32_t> elements(form.size, 0x11111111);
    const Value value(fl_value_new_int32_list(elements.data(), form.size));
    ShouldBe(value.get(), Octets{9} + form.octets + repeat(paddings[i], 0) +
                              repeat(form.size * 4, 0x11));
  }
}

TEST_F(SizedValueTest, Int64ListsOfEverySizeForm) {
  const size_t paddings[] = {6, 4, 4, 2};
  for (size_t i = 0; i < std::size(kBoundaries); ++i) {
    const SizeForm& form = kBoundaries[i];
    SCOPED_TRACE(form.size);
    const std::vector<int64_t> elements(form.size, 0x2222222222222222);
    const Value value(fl_value_new_int64_list(elements.data(), form.size));
    ShouldBe(value.get(), Octets{10} + form.octets + repeat(paddings[i], 0) +
                              repeat(form.size * 8, 0x22));
  }
}

TEST_F(SizedValueTest, ListsOfEverySizeForm) {
  for (const SizeForm& form : kBoundaries) {
    SCOPED_TRACE(form.size);
    const Value value(fl_value_new_list());
    for (uint32_t i = 0; i < form.size; ++i) {
      fl_value_append_take(value.get(), fl_value_new_bool(true));
    }
    ShouldBe(value.get(), Octets{12} + form.octets + repeat(form.size, 1));
  }
}

TEST_F(SizedValueTest, MapsCountEntriesAndNotValues) {
  const Value value(fl_value_new_map());
  Octets entries;
  for (uint8_t i = 0; i < 254; ++i) {
    fl_value_set_take(value.get(), fl_value_new_int(i), fl_value_new_null());
    entries = entries + Octets{3, i, 0, 0, 0, 0};
  }
  ShouldBe(value.get(), Octets{13, 254, 254, 0} + entries);
}

TEST_F(SizedValueTest, LongerFormsOfASmallSizeAreRead) {
  for (const Octets& octets : {Octets{7, 1, 'a'}, Octets{7, 254, 1, 0, 'a'},
                               Octets{7, 255, 1, 0, 0, 0, 'a'}}) {
    const Value value = Decode(octets);
    ASSERT_NE(value, nullptr);
    EXPECT_STREQ(fl_value_get_string(value.get()), "a");
  }
}

}  // namespace
