// The base of method codecs, and what the channels add to its operations.
#include "fl_method_codec_private.h"

#include "as_real.h"

G_DEFINE_TYPE(FlMethodCodec, fl_method_codec, G_TYPE_OBJECT)

static void fl_method_codec_class_init(FlMethodCodecClass*) {}

static void fl_method_codec_init(FlMethodCodec*) {}

namespace embedding {

gboolean encode_response(FlMethodCodec* codec, FlMethodResponse* response,
                         GBytes** bytes, GError** error) {
  FlMethodCodecClass* klass = FL_METHOD_CODEC_GET_CLASS(codec);
  *bytes = nullptr;
  // The absence of bytes is the answer, so NULL is no failure here. The real
  // library has answered with NULL in some releases and with no bytes in
  // others.
  if (FL_IS_METHOD_NOT_IMPLEMENTED_RESPONSE(response)) {
    if (kAsReal) *bytes = g_bytes_new(nullptr, 0);
    return TRUE;
  }
  if (FL_IS_METHOD_SUCCESS_RESPONSE(response)) {
    *bytes = klass->encode_success_envelope(
        codec,
        fl_method_success_response_get_result(
            FL_METHOD_SUCCESS_RESPONSE(response)),
        error);
  } else if (FL_IS_METHOD_ERROR_RESPONSE(response)) {
    FlMethodErrorResponse* failure = FL_METHOD_ERROR_RESPONSE(response);
    *bytes = klass->encode_error_envelope(
        codec, fl_method_error_response_get_code(failure),
        fl_method_error_response_get_message(failure),
        fl_method_error_response_get_details(failure), error);
  } else {
    g_assert(!kAsReal);
    g_set_error(error, FL_MESSAGE_CODEC_ERROR,
                FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE, "A %s has no encoding",
                G_OBJECT_TYPE_NAME(response));
  }
  return *bytes != nullptr;
}

FlMethodResponse* decode_response(FlMethodCodec* codec, GBytes* bytes,
                                  GError** error) {
  if (bytes == nullptr || g_bytes_get_size(bytes) == 0) {
    return FL_METHOD_RESPONSE(fl_method_not_implemented_response_new());
  }
  return FL_METHOD_CODEC_GET_CLASS(codec)->decode_response(codec, bytes, error);
}

}  // namespace embedding
