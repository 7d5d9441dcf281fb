// The orders that are part of the binary interface. Wrong ones do not compile;
// the tests that run hold what the compiler can not know.
#include <flutter_linux/flutter_linux.h>
#include <gtest/gtest.h>

#include <cstddef>

#include "headers_as.h"

namespace {

static_assert(FL_VALUE_TYPE_NULL == 0);
static_assert(FL_VALUE_TYPE_BOOL == 1);
static_assert(FL_VALUE_TYPE_INT == 2);
static_assert(FL_VALUE_TYPE_FLOAT == 3);
static_assert(FL_VALUE_TYPE_STRING == 4);
static_assert(FL_VALUE_TYPE_UINT8_LIST == 5);
static_assert(FL_VALUE_TYPE_INT32_LIST == 6);
static_assert(FL_VALUE_TYPE_INT64_LIST == 7);
static_assert(FL_VALUE_TYPE_FLOAT_LIST == 8);
static_assert(FL_VALUE_TYPE_LIST == 9);
static_assert(FL_VALUE_TYPE_MAP == 10);
static_assert(FL_VALUE_TYPE_FLOAT32_LIST == 11);
static_assert(FL_VALUE_TYPE_CUSTOM == 12);

static_assert(FL_MESSAGE_CODEC_ERROR_FAILED == 0);
static_assert(FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA == 1);
static_assert(FL_MESSAGE_CODEC_ERROR_ADDITIONAL_DATA == 2);
static_assert(FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE == 3);

static_assert(FL_METHOD_RESPONSE_ERROR_FAILED == 0);
static_assert(FL_METHOD_RESPONSE_ERROR_REMOTE_ERROR == 1);
static_assert(FL_METHOD_RESPONSE_ERROR_NOT_IMPLEMENTED == 2);

static_assert(FL_BINARY_MESSENGER_ERROR_ALREADY_RESPONDED == 0);

// The offset of the nth function, counted from 0, after `Head`.
template <typename Head>
constexpr size_t slot(size_t n) {
  return sizeof(Head) + n * sizeof(void (*)());
}

using MessageCodec = FlMessageCodecClass;
static_assert(offsetof(MessageCodec, encode_message) == slot<GObjectClass>(0));
static_assert(offsetof(MessageCodec, decode_message) == slot<GObjectClass>(1));
static_assert(sizeof(MessageCodec) == slot<GObjectClass>(2));

using Standard = FlStandardMessageCodecClass;
static_assert(offsetof(Standard, write_value) == slot<MessageCodec>(0));
static_assert(offsetof(Standard, read_value_of_type) == slot<MessageCodec>(1));
static_assert(sizeof(Standard) == slot<MessageCodec>(2));

using MethodCodec = FlMethodCodecClass;
static_assert(offsetof(MethodCodec, encode_method_call) ==
              slot<GObjectClass>(0));
static_assert(offsetof(MethodCodec, decode_method_call) ==
              slot<GObjectClass>(1));
static_assert(offsetof(MethodCodec, encode_success_envelope) ==
              slot<GObjectClass>(2));
static_assert(offsetof(MethodCodec, encode_error_envelope) ==
              slot<GObjectClass>(3));
static_assert(offsetof(MethodCodec, decode_response) == slot<GObjectClass>(4));
static_assert(sizeof(MethodCodec) == slot<GObjectClass>(5));

using Messenger = FlBinaryMessengerInterface;
static_assert(offsetof(Messenger, set_message_handler_on_channel) ==
              slot<GTypeInterface>(0));
static_assert(offsetof(Messenger, send_response) == slot<GTypeInterface>(1));
static_assert(offsetof(Messenger, send_on_channel) == slot<GTypeInterface>(2));
static_assert(offsetof(Messenger, send_on_channel_finish) ==
              slot<GTypeInterface>(3));
static_assert(offsetof(Messenger, resize_channel) == slot<GTypeInterface>(4));
static_assert(offsetof(Messenger, set_warns_on_channel_overflow) ==
              slot<GTypeInterface>(5));
static_assert(offsetof(Messenger, shutdown) == slot<GTypeInterface>(6));
static_assert(sizeof(Messenger) == slot<GTypeInterface>(7));

using Registrar = FlPluginRegistrarInterface;
static_assert(offsetof(Registrar, get_messenger) == slot<GTypeInterface>(0));
static_assert(offsetof(Registrar, get_texture_registrar) ==
              slot<GTypeInterface>(1));
static_assert(offsetof(Registrar, get_view) == slot<GTypeInterface>(2));
static_assert(sizeof(Registrar) == slot<GTypeInterface>(3));

using Registry = FlPluginRegistryInterface;
static_assert(offsetof(Registry, g_iface) == 0);
static_assert(offsetof(Registry, get_registrar_for_plugin) ==
              slot<GTypeInterface>(0));
static_assert(sizeof(Registry) == slot<GTypeInterface>(1));

static_assert(sizeof(FlMethodResponseClass) == sizeof(GObjectClass));
static_assert(sizeof(FlBinaryMessengerResponseHandleClass) ==
              sizeof(GObjectClass));

// Instances that others derive from hold their parent alone.
static_assert(sizeof(FlMessageCodec) == sizeof(GObject));
static_assert(sizeof(FlStandardMessageCodec) == sizeof(GObject));
static_assert(sizeof(FlMethodCodec) == sizeof(GObject));
static_assert(sizeof(FlMethodResponse) == sizeof(GObject));
static_assert(sizeof(FlBinaryMessengerResponseHandle) == sizeof(GObject));

struct Relation {
  const char* name;
  GType type;
  GType parent;
};

TEST(LayoutTest, TypesHaveTheirNamesAndParents) {
  const GType message_codec = fl_message_codec_get_type();
  const GType method_codec = fl_method_codec_get_type();
  const GType response = fl_method_response_get_type();
  const Relation relations[] = {
      {"FlMessageCodec", message_codec, G_TYPE_OBJECT},
      {"FlStandardMessageCodec", fl_standard_message_codec_get_type(),
       message_codec},
      {"FlMethodCodec", method_codec, G_TYPE_OBJECT},
      {"FlStandardMethodCodec", fl_standard_method_codec_get_type(),
       method_codec},
      {"FlMethodResponse", response, G_TYPE_OBJECT},
      {"FlMethodSuccessResponse", fl_method_success_response_get_type(),
       response},
      {"FlMethodErrorResponse", fl_method_error_response_get_type(), response},
      {"FlMethodNotImplementedResponse",
       fl_method_not_implemented_response_get_type(), response},
      {"FlMethodCall", fl_method_call_get_type(), G_TYPE_OBJECT},
      {"FlMethodChannel", fl_method_channel_get_type(), G_TYPE_OBJECT},
      {"FlEventChannel", fl_event_channel_get_type(), G_TYPE_OBJECT},
      {"FlBinaryMessengerResponseHandle",
       fl_binary_messenger_response_handle_get_type(), G_TYPE_OBJECT},
  };
  for (const Relation& relation : relations) {
    EXPECT_STREQ(g_type_name(relation.type), relation.name);
    EXPECT_EQ(g_type_parent(relation.type), relation.parent) << relation.name;
  }
}

TEST(LayoutTest, InterfacesAreForObjects) {
  for (const GType type :
       {fl_binary_messenger_get_type(), fl_plugin_registrar_get_type(),
        fl_plugin_registry_get_type()}) {
    EXPECT_TRUE(G_TYPE_IS_INTERFACE(type)) << g_type_name(type);
    EXPECT_TRUE(g_type_is_a(type, G_TYPE_OBJECT)) << g_type_name(type);
  }
}

TEST(LayoutTest, ErrorDomainsDiffer) {
  EXPECT_NE(FL_MESSAGE_CODEC_ERROR, FL_METHOD_RESPONSE_ERROR);
  EXPECT_NE(FL_MESSAGE_CODEC_ERROR, FL_BINARY_MESSENGER_ERROR);
  EXPECT_NE(FL_METHOD_RESPONSE_ERROR, FL_BINARY_MESSENGER_ERROR);
}

TEST(LayoutTest, TheHeadersServeCAndCxx14) {
  EXPECT_EQ(headers_work_as_c(), 1u);
  EXPECT_EQ(headers_work_as_cxx14(), 1u);
}

}  // namespace
