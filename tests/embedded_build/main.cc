// Stands for an application: its generated registrant is C++14 and knows of
// the plugin only what the public header says.
#include <corvane/corvane_plugin.h>

#include <cstdio>
#include <cstring>

static_assert(__cplusplus < 201703L, "the plugin's C++17 must not leak out");

void fl_register_plugins(FlPluginRegistry* registry) {
  g_autoptr(FlPluginRegistrar) registrar =
      fl_plugin_registry_get_registrar_for_plugin(registry, "CorvanePlugin");
  corvane_plugin_register_with_registrar(registrar);
}

// Loading and asking for the type is enough to see that the two have met.
int main() {
  const char* name = g_type_name(corvane_plugin_get_type());
  std::printf("plugin type %s\n", name);
  return std::strcmp(name, "CorvanePlugin");
}
