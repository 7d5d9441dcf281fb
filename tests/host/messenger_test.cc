// The messenger's table, its answers and what it sends.
#include "engine/messenger.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>
#include <vector>

#include "support/glib_log.h"

namespace corvane_test {
namespace {

using corvane::messenger_deliver;
using corvane::messenger_new;

// What a handler keeps of the messages it got, and how often it was dropped.
struct Receiver {
  std::vector<std::string> channels;
  std::vector<FlBinaryMessengerResponseHandle*> handles;
  std::vector<size_t> sizes;
  int dropped = 0;

  ~Receiver() {
    for (auto* handle : handles) g_object_unref(handle);
  }

  static void OnMessage(FlBinaryMessenger*, const gchar* channel,
                        GBytes* message,
                        FlBinaryMessengerResponseHandle* handle,
                        gpointer self) {
    auto* receiver = static_cast<Receiver*>(self);
    receiver->channels.emplace_back(channel);
    receiver->sizes.push_back(g_bytes_get_size(message));
    receiver->handles.push_back(
        FL_BINARY_MESSENGER_RESPONSE_HANDLE(g_object_ref(handle)));
  }
  static void OnDropped(gpointer self) {
    ++static_cast<Receiver*>(self)->dropped;
  }
};

// What came back for a message, if anything did.
struct Answer {
  int count = 0;
  std::optional<std::string> bytes;  // empty for a NULL one

  corvane::ReplyHandler Handler() {
    return [this](GBytes* reply) {
      ++count;
      if (reply == nullptr) return;
      gsize size = 0;
      const auto* data =
          static_cast<const char*>(g_bytes_get_data(reply, &size));
      bytes = std::string(data, size);
    };
  }
};

class MessengerTest : public ::testing::Test {
 protected:
  ~MessengerTest() override {
    corvane::messenger_shutdown(messenger_);
    g_object_unref(messenger_);
  }

  void Handle(const char* channel, Receiver* receiver) {
    fl_binary_messenger_set_message_handler_on_channel(
        messenger_, channel, Receiver::OnMessage, receiver,
        Receiver::OnDropped);
  }
  void Remove(const char* channel) {
    fl_binary_messenger_set_message_handler_on_channel(
        messenger_, channel, nullptr, nullptr, nullptr);
  }
  gboolean Respond(FlBinaryMessengerResponseHandle* handle, const char* text,
                   GError** error = nullptr) {
    g_autoptr(GBytes) bytes =
        text != nullptr ? g_bytes_new(text, strlen(text)) : nullptr;
    return fl_binary_messenger_send_response(messenger_, handle, bytes, error);
  }

  GlibLogCapture glib_;
  FlBinaryMessenger* messenger_ = messenger_new();
  Receiver receiver_;
  Answer answer_;
};

TEST_F(MessengerTest, AMessageReachesTheHandlerOfItsChannelAlone) {
  Receiver other;
  Handle("here", &receiver_);
  Handle("there", &other);
  g_autoptr(GBytes) message = g_bytes_new("abc", 3);
  messenger_deliver(messenger_, "here", message, answer_.Handler());
  EXPECT_EQ(receiver_.channels, std::vector<std::string>{"here"});
  EXPECT_EQ(receiver_.sizes, std::vector<size_t>{3});
  EXPECT_EQ(other.channels.size(), 0U);
  EXPECT_EQ(answer_.count, 0);
  EXPECT_TRUE(Respond(receiver_.handles[0], "yes"));
  EXPECT_EQ(answer_.count, 1);
  EXPECT_EQ(answer_.bytes, "yes");
}

TEST_F(MessengerTest, AMessageIsNeverANullPointer) {
  Handle("here", &receiver_);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  EXPECT_EQ(receiver_.sizes, std::vector<size_t>{0});
  Respond(receiver_.handles[0], "");
}

TEST_F(MessengerTest, AChannelWithoutHandlerAnswersNull) {
  messenger_deliver(messenger_, "nowhere", nullptr, answer_.Handler());
  EXPECT_EQ(answer_.count, 1);
  EXPECT_EQ(answer_.bytes, std::nullopt);
}

TEST_F(MessengerTest, ANullResponseArrivesAsOne) {
  Handle("here", &receiver_);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  EXPECT_TRUE(Respond(receiver_.handles[0], nullptr));
  EXPECT_EQ(answer_.count, 1);
  EXPECT_EQ(answer_.bytes, std::nullopt);
}

TEST_F(MessengerTest, AnAnswerMayComeFromAnotherThread) {
  Handle("here", &receiver_);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  std::thread worker([&] { Respond(receiver_.handles[0], "late"); });
  worker.join();
  EXPECT_EQ(answer_.bytes, "late");
}

TEST_F(MessengerTest, ASecondAnswerIsRefusedWithACriticalAndAnError) {
  Handle("here", &receiver_);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  Respond(receiver_.handles[0], "one");
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(Respond(receiver_.handles[0], "two", &error));
  EXPECT_TRUE(g_error_matches(error, FL_BINARY_MESSENGER_ERROR,
                              FL_BINARY_MESSENGER_ERROR_ALREADY_RESPONDED));
  EXPECT_EQ(answer_.count, 1);
  const std::vector<GlibLine> lines = glib_.Take();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, G_LOG_LEVEL_CRITICAL);
}

TEST_F(MessengerTest, AHandleDroppedUnansweredIsACritical) {
  Handle("here", &receiver_);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  g_object_unref(receiver_.handles[0]);
  receiver_.handles.clear();
  const std::vector<GlibLine> lines = glib_.Take();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, G_LOG_LEVEL_CRITICAL);
  EXPECT_EQ(answer_.count, 0);
}

TEST_F(MessengerTest, ReplacingAHandlerDropsTheOldOne) {
  Receiver successor;
  Handle("here", &receiver_);
  Handle("here", &successor);
  EXPECT_EQ(receiver_.dropped, 1);
  EXPECT_EQ(successor.dropped, 0);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  EXPECT_EQ(receiver_.channels.size(), 0U);
  ASSERT_EQ(successor.handles.size(), 1U);
  Respond(successor.handles[0], "");
  Remove("here");
}

TEST_F(MessengerTest, RemovingAHandlerDropsItAndIgnoresANotify) {
  Receiver ignored;
  Handle("here", &receiver_);
  fl_binary_messenger_set_message_handler_on_channel(
      messenger_, "here", nullptr, &ignored, Receiver::OnDropped);
  EXPECT_EQ(receiver_.dropped, 1);
  EXPECT_EQ(ignored.dropped, 0);
  messenger_deliver(messenger_, "here", nullptr, answer_.Handler());
  EXPECT_EQ(answer_.count, 1);
}

TEST_F(MessengerTest, WhatThePluginSendsReachesTheReceiver) {
  std::vector<std::string> sent;
  corvane::messenger_set_outgoing(messenger_, [&](const char* channel,
                                                  GBytes* message) {
    sent.push_back(std::string(channel) + (message != nullptr ? "" : " ends"));
  });
  g_autoptr(GBytes) message = g_bytes_new("abc", 3);
  fl_binary_messenger_send_on_channel(messenger_, "log", message, nullptr,
                                      nullptr, nullptr);
  fl_binary_messenger_send_on_channel(messenger_, "log", nullptr, nullptr,
                                      nullptr, nullptr);
  EXPECT_EQ(sent, (std::vector<std::string>{"log", "log ends"}));
}

TEST_F(MessengerTest, ASenderThatWaitsForAnAnswerGetsAnEmptyOne) {
  gsize size = 1;
  fl_binary_messenger_send_on_channel(
      messenger_, "log", nullptr, nullptr,
      [](GObject* object, GAsyncResult* result, gpointer out) {
        g_autoptr(GError) error = nullptr;
        g_autoptr(GBytes) answer = fl_binary_messenger_send_on_channel_finish(
            FL_BINARY_MESSENGER(object), result, &error);
        EXPECT_EQ(error, nullptr);
        *static_cast<gsize*>(out) = g_bytes_get_size(answer);
      },
      &size);
  while (size != 0) g_main_context_iteration(nullptr, TRUE);
  EXPECT_EQ(size, 0U);
}

}  // namespace
}  // namespace corvane_test
