// The wrappers of the interfaces: each reaches its slot with its arguments.
#include "channel_fixture.h"

namespace {

using testing::ElementsAre;

// Registrar and registry in one object: pointers out, pointers noted.
struct SmallRegistry {
  GObject parent_instance;
  FlBinaryMessenger* messenger;
  std::string* asked_for;
};

struct SmallRegistryClass {
  GObjectClass parent_class;
};

SmallRegistry* as_registry(gpointer object) {
  return static_cast<SmallRegistry*>(object);
}

// Nobody looks into these two.
int texture_registrar;
int view;

void registrar_iface_init(FlPluginRegistrarInterface* iface) {
  iface->get_messenger = [](FlPluginRegistrar* registrar) {
    return as_registry(registrar)->messenger;
  };
  iface->get_texture_registrar = [](FlPluginRegistrar*) {
    return reinterpret_cast<FlTextureRegistrar*>(&texture_registrar);
  };
  iface->get_view = [](FlPluginRegistrar*) {
    return reinterpret_cast<FlView*>(&view);
  };
}

void registry_iface_init(FlPluginRegistryInterface* iface) {
  iface->get_registrar_for_plugin = [](FlPluginRegistry* registry,
                                       const gchar* name) {
    *as_registry(registry)->asked_for = name;
    return FL_PLUGIN_REGISTRAR(g_object_ref(registry));
  };
}

G_DEFINE_TYPE_WITH_CODE(SmallRegistry, small_registry, G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(fl_plugin_registrar_get_type(),
                                              registrar_iface_init)
                            G_IMPLEMENT_INTERFACE(fl_plugin_registry_get_type(),
                                                  registry_iface_init))

void small_registry_class_init(SmallRegistryClass*) {}

void small_registry_init(SmallRegistry*) {}

class InterfaceTest : public ChannelTest {
 protected:
  InterfaceTest() {
    registry_->messenger = messenger_.get();
    registry_->asked_for = &asked_for_;
  }

  std::string asked_for_;
  Owned<SmallRegistry> registry_{
      as_registry(g_object_new(small_registry_get_type(), nullptr))};
};

TEST_F(InterfaceTest, TheRegistrarGivesWhatItHas) {
  FlPluginRegistrar* registrar = FL_PLUGIN_REGISTRAR(registry_.get());
  EXPECT_EQ(fl_plugin_registrar_get_messenger(registrar), messenger_.get());
  EXPECT_EQ(
      static_cast<void*>(fl_plugin_registrar_get_texture_registrar(registrar)),
      &texture_registrar);
  EXPECT_EQ(static_cast<void*>(fl_plugin_registrar_get_view(registrar)), &view);
}

TEST_F(InterfaceTest, TheRegistryGivesARegistrarByName) {
  FlPluginRegistry* registry = FL_PLUGIN_REGISTRY(registry_.get());
  g_autoptr(FlPluginRegistrar) registrar =
      fl_plugin_registry_get_registrar_for_plugin(registry, "CorvanePlugin");
  EXPECT_EQ(static_cast<void*>(registrar), registry_.get());
  EXPECT_EQ(asked_for_, "CorvanePlugin");
}

TEST_F(InterfaceTest, TheMessengersSettersReachIt) {
  fl_binary_messenger_resize_channel(messenger_.get(), "events", 7);
  fl_binary_messenger_set_warns_on_channel_overflow(messenger_.get(), "events",
                                                    true);
  fl_binary_messenger_set_warns_on_channel_overflow(messenger_.get(), "calls",
                                                    false);
  EXPECT_THAT(
      state().settings,
      ElementsAre("resize events 7", "warns events yes", "warns calls no"));
}

TEST_F(InterfaceTest, ANullHandlerRemovesAndItsDestroyNotifyIsIgnored) {
  int destroyed = 0;
  fl_binary_messenger_set_message_handler_on_channel(
      messenger_.get(), "raw", nullptr, &destroyed,
      [](gpointer count) { ++*static_cast<int*>(count); });
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(state().table.count("raw"), 0u);
}

TEST_F(InterfaceTest, AHandlerGetsItsChannelMessageAndData) {
  std::string seen;
  fl_binary_messenger_set_message_handler_on_channel(
      messenger_.get(), "raw",
      [](FlBinaryMessenger* messenger, const gchar* channel, GBytes* message,
         FlBinaryMessengerResponseHandle* handle, gpointer seen) {
        *static_cast<std::string*>(seen) = channel;
        EXPECT_TRUE(fl_binary_messenger_send_response(messenger, handle,
                                                      message, nullptr));
      },
      &seen, nullptr);
  EXPECT_EQ(AnswerTo(Deliver("raw", {1, 2, 3})), (Octets{1, 2, 3}));
  EXPECT_EQ(seen, "raw");
}

TEST_F(InterfaceTest, WhatIsNoMessengerIsACritical) {
  g_autoptr(GBytes) bytes = g_bytes_new(nullptr, 0);
  auto* none = reinterpret_cast<FlBinaryMessenger*>(codec());
  fl_binary_messenger_send_on_channel(none, "raw", bytes, nullptr, nullptr,
                                      nullptr);
  EXPECT_THAT(logs_.Take(),
              ElementsAre(CriticalOf("fl_binary_messenger_send_on_channel")));
  EXPECT_EQ(fl_method_channel_new(none, "calls", codec()), nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_method_channel_new")));
}

}  // namespace
