// Calls towards Dart.
#include "channel_fixture.h"

namespace {

using testing::IsEmpty;

class InvokeMethodTest : public ChannelTest {
 protected:
  // Calls a method and waits for its outcome.
  void Invoke(FlValue* args = nullptr, GCancellable* cancellable = nullptr) {
    finished_ = false;
    fl_method_channel_invoke_method(channel_.get(), "m", args, cancellable,
                                    Finish, this);
    while (!finished_) g_main_context_iteration(nullptr, TRUE);
  }

  static void Finish(GObject* source, GAsyncResult* result, gpointer test) {
    auto* self = static_cast<InvokeMethodTest*>(test);
    GError* error = nullptr;
    self->response_.reset(fl_method_channel_invoke_method_finish(
        FL_METHOD_CHANNEL(source), result, &error));
    self->error_.reset(error);
    self->finished_ = true;
    EXPECT_NE(self->response_ == nullptr, self->error_ == nullptr);
  }

  bool finished_ = false;
  Owned<FlMethodResponse> response_;
  Owned<GError> error_;
  Owned<FlMethodChannel> channel_{
      fl_method_channel_new(messenger_.get(), "calls", codec())};
};

TEST_F(InvokeMethodTest, TheCallTravelsAndTheResultComesBack) {
  const Value args(fl_value_new_bool(true));
  state().reply = {0, 3, 5, 0, 0, 0};
  Invoke(args.get());
  ASSERT_EQ(state().sent.size(), 1u);
  EXPECT_EQ(state().sent[0].channel, "calls");
  EXPECT_EQ(state().sent[0].message, (Octets{7, 1, 'm', 1}));
  ASSERT_TRUE(FL_IS_METHOD_SUCCESS_RESPONSE(response_.get()));
  EXPECT_EQ(text_of(fl_method_response_get_result(response_.get(), nullptr)),
            "5");
}

TEST_F(InvokeMethodTest, AFailingMethodIsAResponse) {
  state().reply = {1, 7, 1, 'E', 0, 0};
  Invoke();
  ASSERT_TRUE(FL_IS_METHOD_ERROR_RESPONSE(response_.get()));
  EXPECT_STREQ(fl_method_error_response_get_code(
                   FL_METHOD_ERROR_RESPONSE(response_.get())),
               "E");
}

TEST_F(InvokeMethodTest, NoBytesAtAllAreNotImplemented) {
  state().reply = {};
  Invoke();
  EXPECT_TRUE(FL_IS_METHOD_NOT_IMPLEMENTED_RESPONSE(response_.get()));
}

TEST_F(InvokeMethodTest, AMalformedAnswerIsAnError) {
  state().reply = {0};
  Invoke();
  EXPECT_TRUE(g_error_matches(error_.get(), FL_MESSAGE_CODEC_ERROR,
                              FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA));
}

TEST_F(InvokeMethodTest, TheMessengersErrorIsHandedOn) {
  state().send_failure = MessengerState::Failure::kError;
  Invoke();
  EXPECT_TRUE(g_error_matches(error_.get(), G_IO_ERROR, G_IO_ERROR_CLOSED));
}

TEST_F(InvokeMethodTest, ACancelledCallIsAnError) {
  const Owned<GCancellable> cancellable(g_cancellable_new());
  g_cancellable_cancel(cancellable.get());
  Invoke(nullptr, cancellable.get());
  EXPECT_TRUE(g_error_matches(error_.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED));
}

TEST_F(InvokeMethodTest, ArgumentsWithoutEncodingAreAnErrorAndNotSent) {
  const Value custom(fl_value_new_custom(1, nullptr, nullptr));
  Invoke(custom.get());
  EXPECT_TRUE(g_error_matches(error_.get(), FL_MESSAGE_CODEC_ERROR,
                              FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE));
  EXPECT_THAT(state().sent, IsEmpty());
}

TEST_F(InvokeMethodTest, WithoutACallbackNoAnswerIsWanted) {
  fl_method_channel_invoke_method(channel_.get(), "m", nullptr, nullptr,
                                  nullptr, nullptr);
  ASSERT_EQ(state().sent.size(), 1u);
  EXPECT_FALSE(state().sent[0].wants_answer);
}

}  // namespace
