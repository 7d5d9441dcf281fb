// What a plugin is handed to register itself with.
#ifndef CORVANE_HOST_ENGINE_REGISTRAR_H_
#define CORVANE_HOST_ENGINE_REGISTRAR_H_

#include <flutter_linux/flutter_linux.h>

namespace corvane {

// A registrar without a view that gives out `messenger` and holds a reference
// on it. Transfer full.
FlPluginRegistrar* registrar_new(FlBinaryMessenger* messenger);

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_REGISTRAR_H_
