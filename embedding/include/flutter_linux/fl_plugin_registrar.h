#ifndef CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRAR_H_
#define CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRAR_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_binary_messenger.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/* The view and its textures: only pointers here, nothing to call. */
typedef struct _FlTextureRegistrar FlTextureRegistrar;
typedef struct _FlView FlView;

/* FlPluginRegistrar: what a plugin gets to attach itself to the engine. */
G_MODULE_EXPORT
G_DECLARE_INTERFACE(FlPluginRegistrar, fl_plugin_registrar, FL,
                    PLUGIN_REGISTRAR, GObject)

/* The order is part of the binary interface; all results are borrowed. */
struct _FlPluginRegistrarInterface {
  GTypeInterface parent_iface;

  FlBinaryMessenger* (*get_messenger)(FlPluginRegistrar* registrar);

  FlTextureRegistrar* (*get_texture_registrar)(FlPluginRegistrar* registrar);

  FlView* (*get_view)(FlPluginRegistrar* registrar);
};

/* Borrowed. */
G_MODULE_EXPORT
FlBinaryMessenger* fl_plugin_registrar_get_messenger(
    FlPluginRegistrar* registrar);

/* Borrowed. */
G_MODULE_EXPORT
FlTextureRegistrar* fl_plugin_registrar_get_texture_registrar(
    FlPluginRegistrar* registrar);

/* Borrowed; NULL when there is no view (any more). */
G_MODULE_EXPORT
FlView* fl_plugin_registrar_get_view(FlPluginRegistrar* registrar);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_PLUGIN_REGISTRAR_H_ */
