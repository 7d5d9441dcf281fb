// An engine with the real plugin on it.
#include "engine/engine.h"

#include <gtest/gtest.h>

#include <vector>

#include "engine/plugin_reply.h"
#include "support/glib_log.h"

namespace corvane_test {
namespace {

using corvane::Engine;

// The code of an answer's error; "" for a success.
std::string CodeOf(FlMethodResponse* response) {
  const auto error = corvane::error_in(response);
  return error ? error->code : "";
}

// Calls and waits.
std::string Call(Engine* engine, const char* method, FlValue* args = nullptr) {
  bool answered = false;
  std::string code;
  engine->Invoke(method, args, [&](FlMethodResponse* response) {
    answered = true;
    code = CodeOf(response);
  });
  engine->IterateUntil([&] { return answered; });
  return code;
}

class EngineTest : public ::testing::Test {
 protected:
  GlibLogCapture glib_;
};

TEST_F(EngineTest, OwnsTheMainContextForItsLife) {
  {
    const Engine engine;
    EXPECT_TRUE(g_main_context_is_owner(nullptr));
  }
  EXPECT_FALSE(g_main_context_is_owner(nullptr));
}

TEST_F(EngineTest, AnswersSuccessErrorAndNotImplemented) {
  Engine engine;
  EXPECT_EQ(Call(&engine, "pause"), "");
  EXPECT_EQ(Call(&engine, "stop"), "NOT_RECORDING");
  EXPECT_EQ(Call(&engine, "rewind"), "NOT_IMPLEMENTED");
}

TEST_F(EngineTest, CarriesTheArguments) {
  Engine engine;
  g_autoptr(FlValue) list = fl_value_new_list();
  g_autoptr(FlValue) bytes = fl_value_new_uint8_list(nullptr, 0);
  EXPECT_EQ(Call(&engine, "append", list), "INVALID_ARGS");
  EXPECT_EQ(Call(&engine, "append", bytes), "NOT_RECORDING");
}

TEST_F(EngineTest, AnswersComeInCallOrder) {
  Engine engine;
  std::vector<int> order;
  for (int i = 0; i < 10; ++i) {
    engine.Invoke("flush", nullptr,
                  [&order, i](FlMethodResponse*) { order.push_back(i); });
  }
  EXPECT_EQ(order.size(), 0U);
  engine.IterateUntil([&] { return order.size() == 10; });
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(EngineTest, RawBytesReachAChannelAsTheyAre) {
  Engine engine;
  bool answered = false;
  engine.SendRaw("com.velka.nobody", nullptr, [&](GBytes* reply) {
    answered = true;
    EXPECT_EQ(reply, nullptr);
  });
  EXPECT_TRUE(answered);
}

TEST_F(EngineTest, LogLinesComeWhileListening) {
  Engine engine;
  std::vector<std::string> lines;
  Call(&engine, "stop");
  engine.ListenToLog([&](const std::string& level, const std::string& message) {
    lines.push_back(level + ": " + message);
  });
  Call(&engine, "stop");
  engine.CancelLog();
  Call(&engine, "stop");
  EXPECT_EQ(lines, std::vector<std::string>{"error: stop failed: NOT_RECORDING "
                                            "stop with no open recording"});
}

TEST_F(EngineTest, ShutdownRunsTheQueueEmptyAndItsAnswersAreLost) {
  Engine engine;
  int answers = 0;
  for (int i = 0; i < 3; ++i) {
    engine.Invoke("stop", nullptr, [&](FlMethodResponse*) { ++answers; });
  }
  engine.Shutdown();
  engine.Shutdown();
  // The worker has logged all three by the time the plugin is gone.
  EXPECT_EQ(glib_.Take().size(), 3U);
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(Call(&engine, "pause"), "NOT_IMPLEMENTED");
}

TEST_F(EngineTest, OneAfterAnotherWorksInOneProcess) {
  for (int i = 0; i < 100; ++i) {
    Engine engine;
    EXPECT_EQ(Call(&engine, "stop"), "NOT_RECORDING");
    // Left under way on purpose: the next engine's iterations meet it.
    engine.Invoke("pause", nullptr,
                  [](FlMethodResponse*) { FAIL() << "answered too late"; });
  }
}

}  // namespace
}  // namespace corvane_test
