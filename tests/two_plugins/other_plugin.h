// The public face of a plugin that has nothing to do with Corvane.
#ifndef CORVANE_TESTS_TWO_PLUGINS_OTHER_PLUGIN_H_
#define CORVANE_TESTS_TWO_PLUGINS_OTHER_PLUGIN_H_

#include <flutter_linux/flutter_linux.h>

#ifdef FLUTTER_PLUGIN_IMPL
#define OTHER_PLUGIN_EXPORT __attribute__((visibility("default")))
#else
#define OTHER_PLUGIN_EXPORT
#endif

G_BEGIN_DECLS

// Opens the method channel "com.example.other". Each call hands it an integer,
// and is answered with the text "N integers, sum S" over all of them; an
// argument that is no integer is answered with the error "NO_INTEGER".
OTHER_PLUGIN_EXPORT void other_plugin_register_with_registrar(
    FlPluginRegistrar* registrar);

G_END_DECLS

#endif  // CORVANE_TESTS_TWO_PLUGINS_OTHER_PLUGIN_H_
