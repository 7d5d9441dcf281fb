// The interfaces by which an application hands itself to its plugins.
#include <flutter_linux/flutter_linux.h>

G_DEFINE_INTERFACE(FlPluginRegistrar, fl_plugin_registrar, G_TYPE_OBJECT)
G_DEFINE_INTERFACE(FlPluginRegistry, fl_plugin_registry, G_TYPE_OBJECT)

static void fl_plugin_registrar_default_init(FlPluginRegistrarInterface*) {}

static void fl_plugin_registry_default_init(FlPluginRegistryInterface*) {}

FlBinaryMessenger* fl_plugin_registrar_get_messenger(
    FlPluginRegistrar* registrar) {
  g_return_val_if_fail(FL_IS_PLUGIN_REGISTRAR(registrar), nullptr);
  return FL_PLUGIN_REGISTRAR_GET_IFACE(registrar)->get_messenger(registrar);
}

FlTextureRegistrar* fl_plugin_registrar_get_texture_registrar(
    FlPluginRegistrar* registrar) {
  g_return_val_if_fail(FL_IS_PLUGIN_REGISTRAR(registrar), nullptr);
  return FL_PLUGIN_REGISTRAR_GET_IFACE(registrar)->get_texture_registrar(
      registrar);
}

FlView* fl_plugin_registrar_get_view(FlPluginRegistrar* registrar) {
  g_return_val_if_fail(FL_IS_PLUGIN_REGISTRAR(registrar), nullptr);
  return FL_PLUGIN_REGISTRAR_GET_IFACE(registrar)->get_view(registrar);
}

FlPluginRegistrar* fl_plugin_registry_get_registrar_for_plugin(
    FlPluginRegistry* registry, const gchar* name) {
  g_return_val_if_fail(FL_IS_PLUGIN_REGISTRY(registry), nullptr);
  g_return_val_if_fail(name != nullptr, nullptr);
  return FL_PLUGIN_REGISTRY_GET_IFACE(registry)->get_registrar_for_plugin(
      registry, name);
}
