//
//  Generated file. Do not edit.
//

// clang-format off

#include "generated_plugin_registrant.h"

#include <corvane/corvane_plugin.h>

void fl_register_plugins(FlPluginRegistry* registry) {
  g_autoptr(FlPluginRegistrar) corvane_registrar =
      fl_plugin_registry_get_registrar_for_plugin(registry, "CorvanePlugin");
  corvane_plugin_register_with_registrar(corvane_registrar);
}
