// The three responses to a method call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "handles.h"
#include "log_capture.h"

namespace {

class ResponseTest : public testing::Test {
 protected:
  // The error that the response gives instead of a result.
  void ShouldFail(FlMethodResponse* response, FlMethodResponseError code) {
    g_autoptr(GError) error = nullptr;
    EXPECT_EQ(fl_method_response_get_result(response, &error), nullptr);
    EXPECT_TRUE(g_error_matches(error, FL_METHOD_RESPONSE_ERROR, code))
        << (error != nullptr ? error->message : "no error");
  }

  LogCapture logs_;
};

TEST_F(ResponseTest, SuccessGivesItsResultBorrowed) {
  const Value result(fl_value_new_int(5));
  const Owned<FlMethodSuccessResponse> response(
      fl_method_success_response_new(result.get()));
  g_autoptr(GError) error = nullptr;
  EXPECT_EQ(fl_method_success_response_get_result(response.get()),
            result.get());
  EXPECT_EQ(
      fl_method_response_get_result(FL_METHOD_RESPONSE(response.get()), &error),
      result.get());
  EXPECT_EQ(error, nullptr);
}

TEST_F(ResponseTest, SuccessMayHaveNoResult) {
  const Owned<FlMethodSuccessResponse> response(
      fl_method_success_response_new(nullptr));
  g_autoptr(GError) error = nullptr;
  EXPECT_EQ(
      fl_method_response_get_result(FL_METHOD_RESPONSE(response.get()), &error),
      nullptr);
  EXPECT_EQ(error, nullptr);
}

TEST_F(ResponseTest, AnErrorGivesItsPartsAndIsARemoteError) {
  const Value details(fl_value_new_string("why"));
  const Owned<FlMethodErrorResponse> response(
      fl_method_error_response_new("CODE", "text", details.get()));
  EXPECT_STREQ(fl_method_error_response_get_code(response.get()), "CODE");
  EXPECT_STREQ(fl_method_error_response_get_message(response.get()), "text");
  EXPECT_EQ(fl_method_error_response_get_details(response.get()),
            details.get());
  ShouldFail(FL_METHOD_RESPONSE(response.get()),
             FL_METHOD_RESPONSE_ERROR_REMOTE_ERROR);
}

TEST_F(ResponseTest, AnErrorMayBeACodeAlone) {
  const Owned<FlMethodErrorResponse> response(
      fl_method_error_response_new("CODE", nullptr, nullptr));
  EXPECT_EQ(fl_method_error_response_get_message(response.get()), nullptr);
  EXPECT_EQ(fl_method_error_response_get_details(response.get()), nullptr);
  ShouldFail(FL_METHOD_RESPONSE(response.get()),
             FL_METHOD_RESPONSE_ERROR_REMOTE_ERROR);
}

TEST_F(ResponseTest, NotImplementedIsAnErrorOfItsOwn) {
  const Owned<FlMethodNotImplementedResponse> response(
      fl_method_not_implemented_response_new());
  ShouldFail(FL_METHOD_RESPONSE(response.get()),
             FL_METHOD_RESPONSE_ERROR_NOT_IMPLEMENTED);
}

TEST_F(ResponseTest, ResponsesKeepTheirOwnReferences) {
  int freed = 0;
  Value value(fl_value_new_custom(
      0, &freed, [](gpointer count) { ++*static_cast<int*>(count); }));
  Owned<FlMethodSuccessResponse> success(
      fl_method_success_response_new(value.get()));
  Owned<FlMethodErrorResponse> error(
      fl_method_error_response_new("CODE", nullptr, value.get()));
  value.reset();
  success.reset();
  EXPECT_EQ(freed, 0);
  error.reset();
  EXPECT_EQ(freed, 1);
}

}  // namespace
