// The end of an application: the messenger drops every channel, and what hangs
// on them, a plugin with its channels, must come apart without a trace.
#include "channel_fixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

// A plugin as plugins are: the method channel's user data is its only lasting
// reference, and its dispose clears and drops the event channel.
struct SmallPlugin {
  GObject parent_instance;
  FlEventChannel* events;
};

struct SmallPluginClass {
  GObjectClass parent_class;
};

G_DEFINE_TYPE(SmallPlugin, small_plugin, G_TYPE_OBJECT)

void small_plugin_dispose(GObject* object) {
  auto* plugin = reinterpret_cast<SmallPlugin*>(object);
  if (plugin->events != nullptr) {
    fl_event_channel_set_stream_handlers(plugin->events, nullptr, nullptr,
                                         nullptr, nullptr);
    g_clear_object(&plugin->events);
  }
  G_OBJECT_CLASS(small_plugin_parent_class)->dispose(object);
}

void small_plugin_class_init(SmallPluginClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = small_plugin_dispose;
}

void small_plugin_init(SmallPlugin*) {}

FlMethodErrorResponse* accept(FlEventChannel*, FlValue*, gpointer) {
  return nullptr;
}

class TeardownTest : public ChannelTest {
 protected:
  // Registers a plugin on two channels and gives up every reference to it.
  SmallPlugin* Register(const char* method_name, const char* event_name) {
    auto* plugin = static_cast<SmallPlugin*>(
        g_object_new(small_plugin_get_type(), nullptr));
    g_autoptr(FlMethodChannel) calls =
        fl_method_channel_new(messenger_.get(), method_name, codec());
    fl_method_channel_set_method_call_handler(
        calls,
        [](FlMethodChannel*, FlMethodCall* call, gpointer) {
          fl_method_call_respond_success(call, nullptr, nullptr);
        },
        plugin, g_object_unref);
    plugin->events =
        fl_event_channel_new(messenger_.get(), event_name, codec());
    fl_event_channel_set_stream_handlers(plugin->events, accept, accept, plugin,
                                         nullptr);
    return plugin;
  }
};

// The order in which channels are dropped is not given: try both.
TEST_F(TeardownTest, ShutdownDisposesThePluginWhicheverChannelGoesFirst) {
  SmallPlugin* first = Register("a/calls", "b/events");
  SmallPlugin* second = Register("d/calls", "c/events");
  const LifeWatch first_plugin(first);
  const LifeWatch second_plugin(second);
  const LifeWatch first_events(first->events);
  const LifeWatch second_events(second->events);
  ShutDown();
  EXPECT_FALSE(first_plugin.alive());
  EXPECT_FALSE(second_plugin.alive());
  EXPECT_FALSE(first_events.alive());
  EXPECT_FALSE(second_events.alive());
}

TEST_F(TeardownTest, RegisteringAgainDisposesTheFormerPlugin) {
  const LifeWatch former(Register("calls", "events"));
  const LifeWatch present(Register("calls", "events"));
  EXPECT_FALSE(former.alive());
  EXPECT_TRUE(present.alive());
  EXPECT_EQ(AnswerTo(Deliver("calls", call_of("m"))), kNullSuccess);
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("listen"))), kNullSuccess);
}

TEST_F(TeardownTest, AChannelMadeDuringShutdownIsClosedFromTheStart) {
  struct Late {
    FlBinaryMessenger* messenger;
    FlMethodCodec* codec;
    Owned<FlMethodChannel> channel;
  } late{messenger_.get(), codec(), nullptr};
  const Owned<FlMethodChannel> early(
      fl_method_channel_new(messenger_.get(), "early", codec()));
  fl_method_channel_set_method_call_handler(
      early.get(), [](FlMethodChannel*, FlMethodCall*, gpointer) {}, &late,
      [](gpointer data) {
        auto* late = static_cast<Late*>(data);
        late->channel.reset(
            fl_method_channel_new(late->messenger, "late", late->codec));
      });
  ShutDown();
  ASSERT_NE(late.channel, nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(HasSubstr("late after shutdown")));
  EXPECT_EQ(G_OBJECT(late.channel.get())->ref_count, 1u);
  fl_method_channel_set_method_call_handler(
      late.channel.get(), [](FlMethodChannel*, FlMethodCall*, gpointer) {},
      nullptr, nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(StartsWith("warning: ")));
}

TEST_F(TeardownTest, ShutdownInTheMiddleOfACallLeavesTheCallWhole) {
  const Owned<FlMethodChannel> calls(
      fl_method_channel_new(messenger_.get(), "calls", codec()));
  fl_method_channel_set_method_call_handler(
      calls.get(),
      [](FlMethodChannel*, FlMethodCall* call, gpointer messenger) {
        shut_down(FL_BINARY_MESSENGER(messenger));
        EXPECT_STREQ(fl_method_call_get_name(call), "m");
        EXPECT_TRUE(fl_method_call_respond_success(call, nullptr, nullptr));
      },
      messenger_.get(), nullptr);
  EXPECT_FALSE(WasAnswered(Deliver("calls", call_of("m"))));
}

TEST_F(TeardownTest, ACallThatIsNeverAnsweredIsSilentAfterShutdown) {
  const Owned<FlMethodChannel> calls(
      fl_method_channel_new(messenger_.get(), "calls", codec()));
  Owned<FlMethodCall> kept;
  fl_method_channel_set_method_call_handler(
      calls.get(),
      [](FlMethodChannel*, FlMethodCall* call, gpointer kept) {
        static_cast<Owned<FlMethodCall>*>(kept)->reset(
            FL_METHOD_CALL(g_object_ref(call)));
      },
      &kept, nullptr);
  Deliver("calls", call_of("m"));
  ShutDown();
  kept.reset();
}

}  // namespace
