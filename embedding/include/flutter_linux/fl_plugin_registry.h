#ifndef CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRY_H_
#define CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRY_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_plugin_registrar.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/* FlPluginRegistry: gives out registrars, one for each plugin. */
G_MODULE_EXPORT
G_DECLARE_INTERFACE(FlPluginRegistry, fl_plugin_registry, FL, PLUGIN_REGISTRY,
                    GObject)

struct _FlPluginRegistryInterface {
  GTypeInterface g_iface;

  /* Transfer full: a new registrar for each call. */
  FlPluginRegistrar* (*get_registrar_for_plugin)(FlPluginRegistry* registry,
                                                 const gchar* name);
};

/* Transfer full: a new registrar for each call. */
G_MODULE_EXPORT
FlPluginRegistrar* fl_plugin_registry_get_registrar_for_plugin(
    FlPluginRegistry* registry, const gchar* name);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRY_H_ */
