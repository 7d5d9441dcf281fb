// Method calls and envelopes, byte by byte.
#include <gmock/gmock.h>

#include "codec_fixture.h"

namespace {

class MethodCodecTest : public testing::Test {
 protected:
  FlMethodCodecClass* klass() { return FL_METHOD_CODEC_GET_CLASS(codec_); }

  Octets EncodeCall(const char* name, FlValue* args) {
    return Taken(klass()->encode_method_call(codec_, name, args, nullptr));
  }

  Octets EncodeSuccess(FlValue* result) {
    return Taken(klass()->encode_success_envelope(codec_, result, nullptr));
  }

  Octets EncodeError(const char* code, const char* text, FlValue* details) {
    return Taken(
        klass()->encode_error_envelope(codec_, code, text, details, nullptr));
  }

  // "name(arguments)", or the refusal's code.
  std::string DecodeCall(const Octets& message) {
    g_autofree gchar* name = nullptr;
    g_autoptr(FlValue) args = nullptr;
    g_autoptr(GError) error = nullptr;
    if (!klass()->decode_method_call(codec_, to_bytes(message).get(), &name,
                                     &args, &error)) {
      EXPECT_EQ(name, nullptr);
      EXPECT_EQ(args, nullptr);
      return "error " + std::to_string(outcome_of(error).code);
    }
    EXPECT_EQ(error, nullptr);
    return std::string(name) + "(" + text_of(args) + ")";
  }

  Owned<FlMethodResponse> DecodeResponse(const Octets& message,
                                         Outcome* outcome = nullptr) {
    g_autoptr(GError) error = nullptr;
    Owned<FlMethodResponse> response(
        klass()->decode_response(codec_, to_bytes(message).get(), &error));
    EXPECT_NE(response == nullptr, error == nullptr);
    if (outcome != nullptr) *outcome = outcome_of(error);
    return response;
  }

  int ResponseRefusal(const Octets& message) {
    Outcome outcome;
    DecodeResponse(message, &outcome);
    return outcome.code;
  }

  static Octets Taken(GBytes* bytes) {
    const Owned<GBytes> owned(bytes);
    EXPECT_NE(owned, nullptr);
    return owned == nullptr ? Octets() : to_octets(owned.get());
  }

  LogCapture logs_;
  Owned<FlStandardMethodCodec> standard_{fl_standard_method_codec_new()};
  FlMethodCodec* const codec_ = FL_METHOD_CODEC(standard_.get());
};

const std::string kFailed =
    "error " + std::to_string(FL_MESSAGE_CODEC_ERROR_FAILED);
const std::string kOutOfData =
    "error " + std::to_string(FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA);
const std::string kUnsupported =
    "error " + std::to_string(FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE);

const Octets kCall = {7, 4, 's', 't', 'o', 'p', 12, 1, 2};
const Octets kSuccess = {0, 3, 5, 0, 0, 0};
// BAD, "no", {k: null}
const Octets kError = {1,   7,   3,  'B', 'A', 'D', 7,   2,
                       'n', 'o', 13, 1,   7,   1,   'k', 0};

TEST_F(MethodCodecTest, ACallIsItsNameThenItsArguments) {
  const Value args(fl_value_new_list());
  fl_value_append_take(args.get(), fl_value_new_bool(false));
  EXPECT_EQ(EncodeCall("stop", args.get()), kCall);
  EXPECT_EQ(DecodeCall(kCall), "stop([false])");
}

TEST_F(MethodCodecTest, AbsentArgumentsTravelAndArriveAsNull) {
  const Octets call = {7, 1, 's', 0};
  EXPECT_EQ(EncodeCall("s", nullptr), call);
  EXPECT_EQ(DecodeCall(call), "s(null)");
}

TEST_F(MethodCodecTest, ArgumentsAreAlignedFromTheStartOfTheMessage) {
  const Value args(fl_value_new_float(1.0));
  const Octets call = {7, 1, 's', 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f};
  EXPECT_EQ(EncodeCall("s", args.get()), call);
  EXPECT_EQ(DecodeCall(call), "s(1.0)");
}

TEST_F(MethodCodecTest, ANameMayBeEmpty) {
  EXPECT_EQ(DecodeCall({7, 0, 0}), "(null)");
}

TEST_F(MethodCodecTest, ACallCutAnywhereIsOutOfData) {
  for (size_t length = 0; length < kCall.size(); ++length) {
    EXPECT_EQ(DecodeCall(Octets(kCall.begin(), kCall.begin() + length)),
              kOutOfData)
        << "cut to " << length << " bytes";
  }
}

TEST_F(MethodCodecTest, BytesAfterACallAreAFailure) {
  EXPECT_EQ(DecodeCall(kCall + Octets{0}), kFailed);
}

TEST_F(MethodCodecTest, ANameThatIsNoStringIsAFailure) {
  for (const Octets& name : {Octets{0}, Octets{1}, Octets{3, 1, 0, 0, 0},
                             Octets{8, 1, 'a'}, Octets{12, 0}, Octets{13, 0}}) {
    EXPECT_EQ(DecodeCall(name + Octets{0}), kFailed) << "type " << int{name[0]};
  }
}

TEST_F(MethodCodecTest, AnUnknownTypeInACallIsUnsupported) {
  EXPECT_EQ(DecodeCall({99, 0}), kUnsupported);
  EXPECT_EQ(DecodeCall({7, 1, 's', 99}), kUnsupported);
}

TEST_F(MethodCodecTest, SuccessIsZeroThenTheResult) {
  const Value result(fl_value_new_int(5));
  EXPECT_EQ(EncodeSuccess(result.get()), kSuccess);
  const auto response = DecodeResponse(kSuccess);
  ASSERT_TRUE(FL_IS_METHOD_SUCCESS_RESPONSE(response.get()));
  FlValue* back = fl_method_success_response_get_result(
      FL_METHOD_SUCCESS_RESPONSE(response.get()));
  EXPECT_EQ(text_of(back), "5");
}

TEST_F(MethodCodecTest, ANullResultTravelsAndArrivesAsANullValue) {
  EXPECT_EQ(EncodeSuccess(nullptr), (Octets{0, 0}));
  const auto response = DecodeResponse({0, 0});
  ASSERT_TRUE(FL_IS_METHOD_SUCCESS_RESPONSE(response.get()));
  FlValue* result = fl_method_success_response_get_result(
      FL_METHOD_SUCCESS_RESPONSE(response.get()));
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(fl_value_get_type(result), FL_VALUE_TYPE_NULL);
}

TEST_F(MethodCodecTest, TheEnvelopeByteCountsInTheAlignment) {
  const Value result(fl_value_new_float(1.0));
  EXPECT_EQ(EncodeSuccess(result.get()),
            (Octets{0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}));
}

TEST_F(MethodCodecTest, AnErrorIsOneThenCodeMessageAndDetails) {
  const Value details(fl_value_new_map());
  fl_value_set_string_take(details.get(), "k", fl_value_new_null());
  EXPECT_EQ(EncodeError("BAD", "no", details.get()), kError);
  const auto response = DecodeResponse(kError);
  ASSERT_TRUE(FL_IS_METHOD_ERROR_RESPONSE(response.get()));
  FlMethodErrorResponse* error = FL_METHOD_ERROR_RESPONSE(response.get());
  EXPECT_STREQ(fl_method_error_response_get_code(error), "BAD");
  EXPECT_STREQ(fl_method_error_response_get_message(error), "no");
  EXPECT_EQ(text_of(fl_method_error_response_get_details(error)), "{k: null}");
}

TEST_F(MethodCodecTest, AbsentMessageAndDetailsTravelAsNullAndArriveAsNone) {
  const Octets envelope = {1, 7, 1, 'E', 0, 0};
  EXPECT_EQ(EncodeError("E", nullptr, nullptr), envelope);
  const auto response = DecodeResponse(envelope);
  ASSERT_TRUE(FL_IS_METHOD_ERROR_RESPONSE(response.get()));
  FlMethodErrorResponse* error = FL_METHOD_ERROR_RESPONSE(response.get());
  EXPECT_EQ(fl_method_error_response_get_message(error), nullptr);
  EXPECT_EQ(fl_method_error_response_get_details(error), nullptr);
}

TEST_F(MethodCodecTest, AnEnvelopeCutAnywhereIsOutOfData) {
  for (const Octets& whole : {kSuccess, kError}) {
    for (size_t length = 0; length < whole.size(); ++length) {
      EXPECT_EQ(ResponseRefusal(Octets(whole.begin(), whole.begin() + length)),
                FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA)
          << "cut to " << length << " of " << whole.size() << " bytes";
    }
  }
}

// Whoever hands on an answer asks whether there is one before it is decoded.
TEST_F(MethodCodecTest, NoEnvelopeAtAllIsOutOfData) {
  const Owned<GBytes> empty = to_bytes({});
  for (GBytes* bytes : {static_cast<GBytes*>(nullptr), empty.get()}) {
    g_autoptr(GError) error = nullptr;
    EXPECT_EQ(klass()->decode_response(codec_, bytes, &error), nullptr);
    EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA);
  }
  logs_.Take();  // NULL may be a critical as well.
}

TEST_F(MethodCodecTest, MalformedEnvelopesAreFailures) {
  const int kFailedCode = FL_MESSAGE_CODEC_ERROR_FAILED;
  EXPECT_EQ(ResponseRefusal(kSuccess + Octets{0}), kFailedCode);
  EXPECT_EQ(ResponseRefusal(kError + Octets{0}), kFailedCode);
  EXPECT_EQ(ResponseRefusal({2, 0}), kFailedCode) << "unknown envelope";
  EXPECT_EQ(ResponseRefusal({255}), kFailedCode) << "unknown envelope";
  EXPECT_EQ(ResponseRefusal({1, 0, 0, 0}), kFailedCode) << "code is null";
  EXPECT_EQ(ResponseRefusal({1, 3, 1, 0, 0, 0, 0, 0}), kFailedCode)
      << "code is an int";
  EXPECT_EQ(ResponseRefusal({1, 7, 1, 'E', 1, 0}), kFailedCode)
      << "message is a bool";
}

TEST_F(MethodCodecTest, WhatHasNoEncodingIsNotSent) {
  const Value custom(fl_value_new_custom(1, nullptr, nullptr));
  const int kUnsupportedCode = FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE;
  g_autoptr(GError) in_call = nullptr;
  g_autoptr(GError) in_success = nullptr;
  g_autoptr(GError) in_error = nullptr;
  EXPECT_EQ(klass()->encode_method_call(codec_, "m", custom.get(), &in_call),
            nullptr);
  EXPECT_EQ(klass()->encode_success_envelope(codec_, custom.get(), &in_success),
            nullptr);
  EXPECT_EQ(klass()->encode_error_envelope(codec_, "E", nullptr, custom.get(),
                                           &in_error),
            nullptr);
  EXPECT_EQ(outcome_of(in_call).code, kUnsupportedCode);
  EXPECT_EQ(outcome_of(in_success).code, kUnsupportedCode);
  EXPECT_EQ(outcome_of(in_error).code, kUnsupportedCode);
}

}  // namespace
