// The files that the Flutter tool writes anew at every build of the example, as
// it writes them: where the tree holds anything else, a build changes it.

// `plugin` has the package's name, its class for Linux, and the name of its
// header without the ending.
export function generatedFiles({name, pluginClass, header}) {
  const comment = '//\n//  Generated file. Do not edit.\n//\n\n// clang-format off\n\n';
  return {
    'example/linux/flutter/generated_plugin_registrant.h': `${comment}\
#ifndef GENERATED_PLUGIN_REGISTRANT_
#define GENERATED_PLUGIN_REGISTRANT_

#include <flutter_linux/flutter_linux.h>

// Registers Flutter plugins.
void fl_register_plugins(FlPluginRegistry* registry);

#endif  // GENERATED_PLUGIN_REGISTRANT_
`,
    'example/linux/flutter/generated_plugin_registrant.cc': `${comment}\
#include "generated_plugin_registrant.h"

#include <${name}/${header}.h>

void fl_register_plugins(FlPluginRegistry* registry) {
  g_autoptr(FlPluginRegistrar) ${name}_registrar =
      fl_plugin_registry_get_registrar_for_plugin(registry, "${pluginClass}");
  ${header}_register_with_registrar(${name}_registrar);
}
`,
    'example/linux/flutter/generated_plugins.cmake': `\
#
# Generated file, do not edit.
#

list(APPEND FLUTTER_PLUGIN_LIST
  ${name}
)

list(APPEND FLUTTER_FFI_PLUGIN_LIST
)

set(PLUGIN_BUNDLED_LIBRARIES)

foreach(plugin \${FLUTTER_PLUGIN_LIST})
  add_subdirectory(flutter/ephemeral/.plugin_symlinks/\${plugin}/linux plugins/\${plugin})
  target_link_libraries(\${BINARY_NAME} PRIVATE \${plugin}_plugin)
  list(APPEND PLUGIN_BUNDLED_LIBRARIES $<TARGET_FILE:\${plugin}_plugin>)
  list(APPEND PLUGIN_BUNDLED_LIBRARIES \${\${plugin}_bundled_libraries})
endforeach(plugin)

foreach(ffi_plugin \${FLUTTER_FFI_PLUGIN_LIST})
  add_subdirectory(flutter/ephemeral/.plugin_symlinks/\${ffi_plugin}/linux plugins/\${ffi_plugin})
  list(APPEND PLUGIN_BUNDLED_LIBRARIES \${\${ffi_plugin}_bundled_libraries})
endforeach(ffi_plugin)
`,
  };
}
