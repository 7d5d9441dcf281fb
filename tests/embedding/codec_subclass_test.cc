// A codec of one's own on top of the standard one: custom values get a type
// byte, at any depth, and the standard types stay what they are.
#include <gmock/gmock.h>

#include "codec_fixture.h"

namespace {

constexpr int kWireStamp = 128;
constexpr int kCustomStamp = 42;

struct StampCodec {
  FlStandardMessageCodec parent_instance;
};

struct StampCodecClass {
  FlStandardMessageCodecClass parent_class;
};

G_DEFINE_TYPE(StampCodec, stamp_codec, fl_standard_message_codec_get_type())

gboolean write_value(FlStandardMessageCodec* codec, GByteArray* buffer,
                     FlValue* value, GError** error) {
  if (fl_value_get_type(value) != FL_VALUE_TYPE_CUSTOM) {
    return FL_STANDARD_MESSAGE_CODEC_CLASS(stamp_codec_parent_class)
        ->write_value(codec, buffer, value, error);
  }
  const guint8 type = kWireStamp;
  g_byte_array_append(buffer, &type, 1);
  return TRUE;
}

FlValue* read_value_of_type(FlStandardMessageCodec* codec, GBytes* buffer,
                            size_t* offset, int type, GError** error) {
  if (type != kWireStamp) {
    return FL_STANDARD_MESSAGE_CODEC_CLASS(stamp_codec_parent_class)
        ->read_value_of_type(codec, buffer, offset, type, error);
  }
  return fl_value_new_custom(kCustomStamp, nullptr, nullptr);
}

void stamp_codec_class_init(StampCodecClass* klass) {
  FL_STANDARD_MESSAGE_CODEC_CLASS(klass)->write_value = write_value;
  FL_STANDARD_MESSAGE_CODEC_CLASS(klass)->read_value_of_type =
      read_value_of_type;
}

void stamp_codec_init(StampCodec*) {}

class CodecSubclassTest : public testing::Test {
 protected:
  LogCapture logs_;
  Owned<FlMessageCodec> codec_{
      FL_MESSAGE_CODEC(g_object_new(stamp_codec_get_type(), nullptr))};
};

TEST_F(CodecSubclassTest, OwnTypesAreWrittenInsideStandardOnes) {
  const Value list(fl_value_new_list());
  fl_value_append_take(list.get(),
                       fl_value_new_custom(kCustomStamp, nullptr, nullptr));
  fl_value_append_take(list.get(), fl_value_new_null());
  const Owned<GBytes> bytes(
      fl_message_codec_encode_message(codec_.get(), list.get(), nullptr));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(to_octets(bytes.get()), (Octets{12, 2, kWireStamp, 0}));
}

TEST_F(CodecSubclassTest, OwnTypesAreReadInsideStandardOnes) {
  const Value map(fl_message_codec_decode_message(
      codec_.get(), to_bytes({13, 1, 7, 1, 't', kWireStamp}).get(), nullptr));
  ASSERT_NE(map, nullptr);
  FlValue* stamp = fl_value_lookup_string(map.get(), "t");
  ASSERT_NE(stamp, nullptr);
  EXPECT_EQ(fl_value_get_custom_type(stamp), kCustomStamp);
}

TEST_F(CodecSubclassTest, AMethodCodecSpeaksThroughIt) {
  const Owned<FlStandardMethodCodec> method_codec(
      fl_standard_method_codec_new_with_message_codec(
          FL_STANDARD_MESSAGE_CODEC(codec_.get())));
  FlMethodCodec* codec = FL_METHOD_CODEC(method_codec.get());
  const Value stamp(fl_value_new_custom(kCustomStamp, nullptr, nullptr));
  const Owned<GBytes> bytes(
      FL_METHOD_CODEC_GET_CLASS(codec)->encode_success_envelope(
          codec, stamp.get(), nullptr));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(to_octets(bytes.get()), (Octets{0, kWireStamp}));
}

TEST_F(CodecSubclassTest, AMethodCodecKeepsItAlive) {
  FlMessageCodec* codec = codec_.get();
  g_object_add_weak_pointer(G_OBJECT(codec),
                            reinterpret_cast<gpointer*>(&codec));
  Owned<FlStandardMethodCodec> method_codec(
      fl_standard_method_codec_new_with_message_codec(
          FL_STANDARD_MESSAGE_CODEC(codec)));
  codec_.reset();
  EXPECT_NE(codec, nullptr);
  method_codec.reset();
  EXPECT_EQ(codec, nullptr);
}

}  // namespace
