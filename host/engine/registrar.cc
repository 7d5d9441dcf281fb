#include "engine/registrar.h"

struct _CorvaneHostRegistrar {
  GObject parent_instance;
  FlBinaryMessenger* messenger;
};

G_DECLARE_FINAL_TYPE(CorvaneHostRegistrar, corvane_host_registrar, CORVANE_HOST,
                     REGISTRAR, GObject)

static void registrar_iface_init(FlPluginRegistrarInterface* iface);

G_DEFINE_TYPE_WITH_CODE(CorvaneHostRegistrar, corvane_host_registrar,
                        G_TYPE_OBJECT,
                        G_IMPLEMENT_INTERFACE(fl_plugin_registrar_get_type(),
                                              registrar_iface_init))

static FlBinaryMessenger* get_messenger(FlPluginRegistrar* registrar) {
  return CORVANE_HOST_REGISTRAR(registrar)->messenger;
}
static FlTextureRegistrar* get_texture_registrar(FlPluginRegistrar*) {
  return nullptr;
}
static FlView* get_view(FlPluginRegistrar*) { return nullptr; }

static void registrar_iface_init(FlPluginRegistrarInterface* iface) {
  iface->get_messenger = get_messenger;
  iface->get_texture_registrar = get_texture_registrar;
  iface->get_view = get_view;
}

static void corvane_host_registrar_dispose(GObject* object) {
  g_clear_object(&CORVANE_HOST_REGISTRAR(object)->messenger);
  G_OBJECT_CLASS(corvane_host_registrar_parent_class)->dispose(object);
}

static void corvane_host_registrar_class_init(
    CorvaneHostRegistrarClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = corvane_host_registrar_dispose;
}

static void corvane_host_registrar_init(CorvaneHostRegistrar*) {}

namespace corvane {

FlPluginRegistrar* registrar_new(FlBinaryMessenger* messenger) {
  auto* self = CORVANE_HOST_REGISTRAR(
      g_object_new(corvane_host_registrar_get_type(), nullptr));
  self->messenger = FL_BINARY_MESSENGER(g_object_ref(messenger));
  return FL_PLUGIN_REGISTRAR(self);
}

}  // namespace corvane
