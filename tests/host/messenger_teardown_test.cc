// How the messenger goes down, as an engine does: with handlers set, answers
// under way, and destroy notifies that call back into it.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "engine/messenger.h"
#include "engine/registrar.h"
#include "support/glib_log.h"

namespace corvane_test {
namespace {

// A handler that keeps each handle, and runs `on_dropped` when it goes.
struct Guest {
  FlBinaryMessengerResponseHandle* handle = nullptr;
  std::function<void()> on_dropped;
  int dropped = 0;

  ~Guest() { g_clear_object(&handle); }

  static void OnMessage(FlBinaryMessenger*, const gchar*, GBytes*,
                        FlBinaryMessengerResponseHandle* handle,
                        gpointer self) {
    static_cast<Guest*>(self)->handle =
        FL_BINARY_MESSENGER_RESPONSE_HANDLE(g_object_ref(handle));
  }
  static void OnDropped(gpointer self) {
    auto* guest = static_cast<Guest*>(self);
    ++guest->dropped;
    if (guest->on_dropped) guest->on_dropped();
  }
};

class TeardownTest : public ::testing::Test {
 protected:
  ~TeardownTest() override { g_object_unref(messenger_); }

  void Invite(const char* channel, Guest* guest) {
    fl_binary_messenger_set_message_handler_on_channel(
        messenger_, channel, Guest::OnMessage, guest, Guest::OnDropped);
  }
  void Remove(const char* channel) {
    fl_binary_messenger_set_message_handler_on_channel(
        messenger_, channel, nullptr, nullptr, nullptr);
  }
  int AnswersTo(const char* channel) {
    int answers = 0;
    corvane::messenger_deliver(messenger_, channel, nullptr,
                               [&](GBytes*) { ++answers; });
    return answers;
  }

  GlibLogCapture glib_;
  FlBinaryMessenger* messenger_ = corvane::messenger_new();
  Guest guest_;
  Guest other_;
};

TEST_F(TeardownTest, EveryHandlerIsDroppedOnce) {
  Invite("one", &guest_);
  Invite("two", &other_);
  corvane::messenger_shutdown(messenger_);
  corvane::messenger_shutdown(messenger_);
  EXPECT_EQ(guest_.dropped, 1);
  EXPECT_EQ(other_.dropped, 1);
  EXPECT_EQ(AnswersTo("one"), 1);
}

TEST_F(TeardownTest, TheWholeTableIsOutOfReachBeforeTheFirstNotify) {
  int reachable = 0;
  const auto look = [&] {
    reachable += guest_.handle != nullptr || other_.handle != nullptr;
    AnswersTo("one");
    AnswersTo("two");
    reachable += guest_.handle != nullptr || other_.handle != nullptr;
  };
  guest_.on_dropped = look;
  other_.on_dropped = look;
  Invite("one", &guest_);
  Invite("two", &other_);
  corvane::messenger_shutdown(messenger_);
  EXPECT_EQ(reachable, 0);
}

TEST_F(TeardownTest, AHandlerSetFromInsideIsRefusedAndDroppedAtOnce) {
  Guest late;
  int dropped_inside = 0;
  guest_.on_dropped = [&] {
    Invite("three", &late);
    dropped_inside = late.dropped;
  };
  Invite("one", &guest_);
  corvane::messenger_shutdown(messenger_);
  EXPECT_EQ(dropped_inside, 1);
  EXPECT_EQ(late.dropped, 1);
  const std::vector<GlibLine> lines = glib_.Take();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].level, G_LOG_LEVEL_WARNING);
}

TEST_F(TeardownTest, RemovingFromInsideIsSilent) {
  guest_.on_dropped = [&] {
    Remove("one");
    Remove("two");
  };
  Invite("one", &guest_);
  Invite("two", &other_);
  corvane::messenger_shutdown(messenger_);
  EXPECT_EQ(guest_.dropped, 1);
  EXPECT_EQ(other_.dropped, 1);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>());
}

TEST_F(TeardownTest, LateAnswersVanishAndCountAsSent) {
  int answers = 0;
  Invite("one", &guest_);
  corvane::messenger_deliver(messenger_, "one", nullptr,
                             [&](GBytes*) { ++answers; });
  corvane::messenger_shutdown(messenger_);
  for (int i = 0; i < 2; ++i) {
    g_autoptr(GError) error = nullptr;
    EXPECT_TRUE(fl_binary_messenger_send_response(messenger_, guest_.handle,
                                                  nullptr, &error));
    EXPECT_EQ(error, nullptr);
  }
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>());
}

TEST_F(TeardownTest, AHandleDroppedAfterwardsIsSilent) {
  Invite("one", &guest_);
  EXPECT_EQ(AnswersTo("one"), 0);
  corvane::messenger_shutdown(messenger_);
  g_clear_object(&guest_.handle);
  EXPECT_EQ(glib_.Take(), std::vector<GlibLine>());
}

TEST_F(TeardownTest, LateEventsVanish) {
  int sent = 0;
  corvane::messenger_set_outgoing(messenger_,
                                  [&](const char*, GBytes*) { ++sent; });
  corvane::messenger_shutdown(messenger_);
  fl_binary_messenger_send_on_channel(messenger_, "log", nullptr, nullptr,
                                      nullptr, nullptr);
  EXPECT_EQ(sent, 0);
}

// The engine's own way in: the interface's slot.
TEST_F(TeardownTest, TheInterfaceShutsDownAsWell) {
  Invite("one", &guest_);
  FL_BINARY_MESSENGER_GET_IFACE(messenger_)->shutdown(messenger_);
  EXPECT_EQ(guest_.dropped, 1);
}

TEST(RegistrarTest, GivesOutItsMessengerAndHoldsIt) {
  FlBinaryMessenger* messenger = corvane::messenger_new();
  FlPluginRegistrar* registrar = corvane::registrar_new(messenger);
  g_object_unref(messenger);
  EXPECT_EQ(fl_plugin_registrar_get_messenger(registrar), messenger);
  EXPECT_EQ(fl_plugin_registrar_get_view(registrar), nullptr);
  EXPECT_EQ(fl_plugin_registrar_get_texture_registrar(registrar), nullptr);
  g_object_add_weak_pointer(G_OBJECT(messenger),
                            reinterpret_cast<gpointer*>(&messenger));
  g_object_unref(registrar);
  EXPECT_EQ(messenger, nullptr);
}

}  // namespace
}  // namespace corvane_test
