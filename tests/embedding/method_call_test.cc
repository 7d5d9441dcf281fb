// Calls: how they are answered, late, twice, and after everything has ended.
#include "channel_fixture.h"

namespace {

using testing::ElementsAre;

class MethodCallTest : public ChannelTest {
 protected:
  MethodCallTest() {
    fl_method_channel_set_method_call_handler(channel_.get(), Keep, this,
                                              nullptr);
  }

  // Keeps the call instead of answering it.
  static void Keep(FlMethodChannel*, FlMethodCall* call, gpointer test) {
    static_cast<MethodCallTest*>(test)->call_.reset(
        FL_METHOD_CALL(g_object_ref(call)));
  }

  // A call that waits for its answer; returns its number.
  int Call() { return Deliver("calls", call_of("m")); }

  Owned<FlMethodCall> call_;
  Owned<FlMethodChannel> channel_{
      fl_method_channel_new(messenger_.get(), "calls", codec())};
};

TEST_F(MethodCallTest, SuccessIsASuccessEnvelope) {
  const int number = Call();
  const Value result(fl_value_new_bool(true));
  EXPECT_TRUE(
      fl_method_call_respond_success(call_.get(), result.get(), nullptr));
  EXPECT_EQ(AnswerTo(number), (Octets{0, 1}));
}

TEST_F(MethodCallTest, NoResultIsNull) {
  const int number = Call();
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_EQ(AnswerTo(number), kNullSuccess);
}

TEST_F(MethodCallTest, AnErrorIsAnErrorEnvelope) {
  const int number = Call();
  const Value details(fl_value_new_bool(true));
  EXPECT_TRUE(fl_method_call_respond_error(call_.get(), "E", "m", details.get(),
                                           nullptr));
  EXPECT_EQ(AnswerTo(number), (Octets{1, 7, 1, 'E', 7, 1, 'm', 1}));
}

TEST_F(MethodCallTest, NotImplementedIsNoBytesAtAll) {
  const int number = Call();
  EXPECT_TRUE(fl_method_call_respond_not_implemented(call_.get(), nullptr));
  EXPECT_EQ(AnswerTo(number).value_or(kNoBytes), kNoBytes);
}

TEST_F(MethodCallTest, AResponseObjectIsAnswerToo) {
  const int number = Call();
  const Owned<FlMethodErrorResponse> response(
      fl_method_error_response_new("E", nullptr, nullptr));
  EXPECT_TRUE(fl_method_call_respond(
      call_.get(), FL_METHOD_RESPONSE(response.get()), nullptr));
  EXPECT_EQ(AnswerTo(number), (Octets{1, 7, 1, 'E', 0, 0}));
}

TEST_F(MethodCallTest, AKeptCallIsAnsweredLater) {
  const int first = Call();
  const Owned<FlMethodCall> first_call = std::move(call_);
  const int second = Call();
  EXPECT_FALSE(WasAnswered(first));
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_TRUE(
      fl_method_call_respond_not_implemented(first_call.get(), nullptr));
  EXPECT_EQ(AnswerTo(first).value_or(kNoBytes), kNoBytes);
  EXPECT_EQ(AnswerTo(second), kNullSuccess);
}

TEST_F(MethodCallTest, ACallKeepsItsArguments) {
  Deliver("calls", {7, 1, 'm', 12, 1, 1});
  EXPECT_EQ(text_of(fl_method_call_get_args(call_.get())), "[true]");
  EXPECT_STREQ(fl_method_call_get_name(call_.get()), "m");
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
}

TEST_F(MethodCallTest, ACallKeepsItsChannelAndCanBeAnsweredAfterItIsClosed) {
  const int number = Call();
  const LifeWatch channel(channel_.get());
  channel_.reset();
  fl_binary_messenger_set_message_handler_on_channel(messenger_.get(), "calls",
                                                     nullptr, nullptr, nullptr);
  EXPECT_TRUE(channel.alive());
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_EQ(AnswerTo(number), kNullSuccess);
  call_.reset();
  EXPECT_FALSE(channel.alive());
}

TEST_F(MethodCallTest, TheLastReferenceReleasesTheWayBack) {
  Call();
  call_.reset();
  EXPECT_THAT(logs_.Take(),
              ElementsAre("critical: message 1 was never answered"));
}

TEST_F(MethodCallTest, ASecondAnswerIsFalseWithoutAnError) {
  const int number = Call();
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(fl_method_call_respond_not_implemented(call_.get(), &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_THAT(logs_.Take(),
              ElementsAre("critical: message 1 was answered before"));
  EXPECT_EQ(AnswerTo(number), kNullSuccess);
}

TEST_F(MethodCallTest, AnAnswerAfterShutdownIsTrueEvenTwice) {
  const int number = Call();
  ShutDown();
  g_autoptr(GError) error = nullptr;
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, &error));
  EXPECT_TRUE(
      fl_method_call_respond_error(call_.get(), "E", nullptr, nullptr, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_FALSE(WasAnswered(number));
}

TEST_F(MethodCallTest, AResultWithoutEncodingIsAnErrorAndLeavesTheCallOpen) {
  const int number = Call();
  const Value custom(fl_value_new_custom(1, nullptr, nullptr));
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(
      fl_method_call_respond_success(call_.get(), custom.get(), &error));
  EXPECT_TRUE(g_error_matches(error, FL_MESSAGE_CODEC_ERROR,
                              FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE));
  EXPECT_FALSE(WasAnswered(number));
  EXPECT_TRUE(fl_method_call_respond_success(call_.get(), nullptr, nullptr));
  EXPECT_EQ(AnswerTo(number), kNullSuccess);
}

}  // namespace
