// The plugin's type, and what registering it opens.
#include <corvane/corvane_plugin.h>
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "channel/overrides.h"
#include "engine/registrar.h"
#include "support/channel_fixture.h"

namespace corvane_test {
namespace {

using testing::ElementsAre;
using RegistrationTest = ChannelTest;

TEST_F(RegistrationTest, ThePluginIsAPlainGObject) {
  const GType type = corvane_plugin_get_type();
  EXPECT_EQ(corvane_plugin_get_type(), type);
  EXPECT_STREQ(g_type_name(type), "CorvanePlugin");
  EXPECT_EQ(g_type_from_name("CorvanePlugin"), type);
  EXPECT_EQ(g_type_parent(type), G_TYPE_OBJECT);
  EXPECT_FALSE(G_TYPE_IS_ABSTRACT(type));
  EXPECT_TRUE(G_TYPE_IS_DERIVABLE(type));

  guint interfaces = 0, signals = 0, properties = 0;
  g_free(g_type_interfaces(type, &interfaces));
  g_free(g_signal_list_ids(type, &signals));
  auto* plugin_class = G_OBJECT_CLASS(g_type_class_ref(type));
  g_free(g_object_class_list_properties(plugin_class, &properties));
  EXPECT_EQ(interfaces, 0u);
  EXPECT_EQ(signals, 0u);
  EXPECT_EQ(properties, 0u);
  g_type_class_unref(plugin_class);
}

TEST_F(RegistrationTest, TheClassOverridesDisposeAlone) {
  GTypeQuery query;
  g_type_query(corvane_plugin_get_type(), &query);
  EXPECT_EQ(query.class_size, sizeof(CorvanePluginClass));
  EXPECT_EQ(query.instance_size, sizeof(GObject) + sizeof(void*));

  auto* own = G_OBJECT_CLASS(g_type_class_ref(corvane_plugin_get_type()));
  auto* parent = G_OBJECT_CLASS(g_type_class_peek_parent(own));
  EXPECT_NE(own->dispose, parent->dispose);
  EXPECT_EQ(own->finalize, parent->finalize);
  EXPECT_EQ(own->constructed, parent->constructed);
  g_type_class_unref(own);
}

using SetHandler =
    decltype(FlBinaryMessengerInterface::set_message_handler_on_channel);

// What a spied registration did; functions in an interface get no data.
struct Spy {
  SetHandler real = nullptr;
  std::vector<std::string> channels;
};
Spy* spy = nullptr;

void SpyOnHandler(FlBinaryMessenger* messenger, const gchar* channel,
                  FlBinaryMessengerMessageHandler handler, gpointer user_data,
                  GDestroyNotify destroy) {
  spy->channels.push_back(std::string(handler == nullptr ? "-" : "+") +
                          channel);
  spy->real(messenger, channel, handler, user_data, destroy);
}

TEST_F(RegistrationTest, TwoChannelsAreOpenedInOrder) {
  Spy seen;
  SetHandler* slot = &FL_BINARY_MESSENGER_GET_IFACE(engine().messenger())
                          ->set_message_handler_on_channel;
  seen.real = *slot;
  spy = &seen;
  {
    const ScopedOverride watch(slot, SpyOnHandler);
    Restart();
  }
  spy = nullptr;
  EXPECT_THAT(seen.channels,
              ElementsAre("+com.velka.corvane", "+com.velka.corvane/log"));
}

TEST_F(RegistrationTest, TheTwoChannelsShareOneCodec) {
  const InstanceCount codecs(fl_standard_method_codec_get_type());
  g_autoptr(FlPluginRegistrar) registrar =
      corvane::registrar_new(engine().messenger());
  corvane_plugin_register_with_registrar(registrar);
  EXPECT_EQ(codecs.made(), 1);
}

TEST_F(RegistrationTest, TheMethodChannelAloneKeepsThePluginAlive) {
  const InstanceCount plugins(corvane_plugin_get_type());
  Restart();
  ASSERT_EQ(plugins.made(), 1);
  EXPECT_EQ(plugins.last()->ref_count, 1u);
  Shutdown();
  EXPECT_EQ(plugins.alive(), 0u);
}

TEST_F(RegistrationTest, TheRegistrarIsNotNeededAfterwards) {
  g_autoptr(FlPluginRegistrar) registrar =
      corvane::registrar_new(engine().messenger());
  corvane_plugin_register_with_registrar(registrar);
  EXPECT_EQ(G_OBJECT(registrar)->ref_count, 1u);
}

TEST_F(RegistrationTest, AnotherEngineMeansAnotherPlugin) {
  Start(Path("take.aac"));
  Restart();
  EXPECT_EQ(Stop(), PlainError("NOT_RECORDING", "stop with no open recording"));
}

}  // namespace
}  // namespace corvane_test
