// What the stand-in promises beyond the real library: bounds, and errors whose
// owner is clear.
#include "channel_fixture.h"
#include "codec_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kDeepest = 1000;

class NestingTest : public CodecTest {
 protected:
  // A null inside `depth` lists, or inside as many maps as their values.
  static Octets NestedLists(size_t depth) {
    Octets message;
    for (size_t i = 0; i < depth; ++i) message = message + Octets{12, 1};
    return message + Octets{0};
  }

  static Octets NestedMaps(size_t depth) {
    Octets message;
    for (size_t i = 0; i < depth; ++i) message = message + Octets{13, 1, 0};
    return message + Octets{0};
  }

  void ShouldBeTooDeep(const Outcome& outcome) {
    EXPECT_EQ(outcome.code, FL_MESSAGE_CODEC_ERROR_FAILED) << outcome;
    EXPECT_THAT(outcome.text, HasSubstr("nested"));
  }
};

TEST_F(NestingTest, AThousandLevelsGoBothWays) {
  for (const Octets& message : {NestedLists(kDeepest), NestedMaps(kDeepest)}) {
    const Value value = Decode(message);
    ASSERT_NE(value, nullptr);
    EXPECT_TRUE(Encode(value.get()) == message);
  }
}

TEST_F(NestingTest, OneLevelMoreIsRefusedWithItsReason) {
  ShouldBeTooDeep(TryDecode(NestedLists(kDeepest + 1)).outcome);
  ShouldBeTooDeep(TryDecode(NestedMaps(kDeepest + 1)).outcome);
}

TEST_F(NestingTest, AMillionLevelsAreRefusedAsFast) {
  ShouldBeTooDeep(TryDecode(repeat(1, 12) + repeat(2000000, 12)).outcome);
}

TEST_F(NestingTest, KeysCountAsWell) {
  Octets message;
  for (int i = 0; i <= kDeepest; ++i) message = message + Octets{13, 1};
  ShouldBeTooDeep(TryDecode(message + Octets{0}).outcome);
}

TEST_F(NestingTest, AValueNestedDeeperIsNotEncoded) {
  Value value(fl_value_new_null());
  for (int i = 0; i <= kDeepest; ++i) {
    Value outer(fl_value_new_list());
    fl_value_append_take(outer.get(), value.release());
    value = std::move(outer);
  }
  ShouldBeTooDeep(TryEncode(value.get()).outcome);
}

TEST_F(NestingTest, ARefusalLeavesNothingBehind) {
  for (int i = 0; i < 3; ++i) {
    ShouldBeTooDeep(TryDecode(NestedLists(kDeepest + 1)).outcome);
    EXPECT_NE(Decode(NestedLists(kDeepest)), nullptr);
  }
}

// The buffer's length has 32 bits. No memory stands behind this one: it must
// be refused untouched.
TEST_F(NestingTest, AMessageThatOutgrowsItsBufferIsRefused) {
  GByteArray full = {nullptr, G_MAXUINT - 8};
  const Value octets(fl_value_new_uint8_list(nullptr, 0));
  const Value list(fl_value_new_list());
  const Value map(fl_value_new_map());
  for (FlValue* value : {octets.get(), list.get(), map.get()}) {
    g_autoptr(GError) error = nullptr;
    EXPECT_FALSE(fl_standard_message_codec_write_value(standard_.get(), &full,
                                                       value, &error));
    EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_FAILED);
    EXPECT_EQ(full.len, G_MAXUINT - 8);
  }
}

class OwnPromisesTest : public ChannelTest {
 protected:
  OwnPromisesTest() {
    fl_method_channel_set_method_call_handler(channel_.get(), Keep, this,
                                              nullptr);
    Deliver("calls", call_of("m"));
  }

  static void Keep(FlMethodChannel*, FlMethodCall* call, gpointer test) {
    static_cast<OwnPromisesTest*>(test)->call_.reset(
        FL_METHOD_CALL(g_object_ref(call)));
  }

  Owned<FlMethodCall> call_;
  Owned<FlMethodChannel> channel_{
      fl_method_channel_new(messenger_.get(), "calls", codec())};
};

// A double release or a leak here is the address sanitizer's to find.
TEST_F(OwnPromisesTest, AFailedAnswersErrorBelongsToTheCaller) {
  state().response_failure = MessengerState::Failure::kError;
  const Owned<FlMethodSuccessResponse> response(
      fl_method_success_response_new(nullptr));
  GError* errors[4] = {};
  EXPECT_FALSE(fl_method_call_respond(
      call_.get(), FL_METHOD_RESPONSE(response.get()), &errors[0]));
  EXPECT_FALSE(
      fl_method_call_respond_success(call_.get(), nullptr, &errors[1]));
  EXPECT_FALSE(fl_method_call_respond_error(call_.get(), "E", nullptr, nullptr,
                                            &errors[2]));
  EXPECT_FALSE(fl_method_call_respond_not_implemented(call_.get(), &errors[3]));
  for (GError* error : errors) {
    const Owned<GError> owned(error);
    EXPECT_TRUE(g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CLOSED));
    EXPECT_STREQ(error->message, "no way back");
  }
}

TEST_F(OwnPromisesTest, AFailureThatNobodyAsksForIsWarnedOf) {
  state().response_failure = MessengerState::Failure::kError;
  EXPECT_FALSE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_THAT(logs_.Take(), ElementsAre(AllOf(StartsWith("warning: "),
                                              HasSubstr("no way back"))));
}

TEST_F(OwnPromisesTest, AMessengerThatFailsWithoutAnErrorIsSurvived) {
  state().response_failure = MessengerState::Failure::kSilent;
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(fl_method_call_respond_success(call_.get(), nullptr, &error));
  EXPECT_FALSE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_EQ(error, nullptr);
}

TEST_F(OwnPromisesTest, AnEventChannelSurvivesSuchAMessengerToo) {
  const Owned<FlEventChannel> events(
      fl_event_channel_new(messenger_.get(), "events", codec()));
  state().response_failure = MessengerState::Failure::kSilent;
  Deliver("events", call_of("listen"));
  EXPECT_THAT(logs_.Take(),
              ElementsAre(StartsWith("warning: "),
                          "critical: message 2 was never answered"));
}

TEST_F(OwnPromisesTest, NoAnswerAndNoErrorFromTheMessengerIsNotImplemented) {
  state().send_failure = MessengerState::Failure::kSilent;
  Owned<FlMethodResponse> response;
  fl_method_channel_invoke_method(
      channel_.get(), "m", nullptr, nullptr,
      [](GObject* channel, GAsyncResult* result, gpointer response) {
        static_cast<Owned<FlMethodResponse>*>(response)->reset(
            fl_method_channel_invoke_method_finish(FL_METHOD_CHANNEL(channel),
                                                   result, nullptr));
      },
      &response);
  while (response == nullptr) g_main_context_iteration(nullptr, TRUE);
  EXPECT_TRUE(FL_IS_METHOD_NOT_IMPLEMENTED_RESPONSE(response.get()));
}

TEST_F(OwnPromisesTest, AResponseOfNoKnownKindIsNotSent) {
  const Owned<FlMethodResponse> response(
      FL_METHOD_RESPONSE(g_object_new(fl_method_response_get_type(), nullptr)));
  g_autoptr(GError) on_sending = nullptr;
  EXPECT_FALSE(
      fl_method_call_respond(call_.get(), response.get(), &on_sending));
  EXPECT_TRUE(g_error_matches(on_sending, FL_MESSAGE_CODEC_ERROR,
                              FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE));
  g_autoptr(GError) on_reading = nullptr;
  EXPECT_EQ(fl_method_response_get_result(response.get(), &on_reading),
            nullptr);
  EXPECT_TRUE(g_error_matches(on_reading, FL_METHOD_RESPONSE_ERROR,
                              FL_METHOD_RESPONSE_ERROR_FAILED));
}

TEST_F(OwnPromisesTest, NullWhereTextOrAValueIsDueIsACritical) {
  EXPECT_EQ(fl_value_new_string(nullptr), nullptr);
  EXPECT_EQ(fl_value_to_string(nullptr), nullptr);
  EXPECT_FALSE(fl_value_equal(nullptr, nullptr));
  fl_value_unref(nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_value_new_string"),
                                        CriticalOf("fl_value_to_string"),
                                        CriticalOf("fl_value_equal"),
                                        CriticalOf("fl_value_unref")));
}

}  // namespace
