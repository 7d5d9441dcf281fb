// The base of message codecs: types, and wrappers that spare subclasses the
// checks of their arguments.
#include <flutter_linux/flutter_linux.h>

G_DEFINE_QUARK(fl_message_codec_error_quark, fl_message_codec_error)

G_DEFINE_TYPE(FlMessageCodec, fl_message_codec, G_TYPE_OBJECT)

static void fl_message_codec_class_init(FlMessageCodecClass*) {}

static void fl_message_codec_init(FlMessageCodec*) {}

GBytes* fl_message_codec_encode_message(FlMessageCodec* codec, FlValue* message,
                                        GError** error) {
  g_return_val_if_fail(FL_IS_MESSAGE_CODEC(codec), nullptr);
  g_autoptr(FlValue) value =
      message != nullptr ? fl_value_ref(message) : fl_value_new_null();
  return FL_MESSAGE_CODEC_GET_CLASS(codec)->encode_message(codec, value, error);
}

FlValue* fl_message_codec_decode_message(FlMessageCodec* codec, GBytes* message,
                                         GError** error) {
  g_return_val_if_fail(FL_IS_MESSAGE_CODEC(codec), nullptr);
  g_return_val_if_fail(message != nullptr, nullptr);
  return FL_MESSAGE_CODEC_GET_CLASS(codec)->decode_message(codec, message,
                                                           error);
}
