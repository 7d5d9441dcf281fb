#ifndef CORVANE_FLUTTER_LINUX_FLUTTER_LINUX_H_
#define CORVANE_FLUTTER_LINUX_FLUTTER_LINUX_H_

/*
 * The one header that applications and plugins include. The parts refuse to
 * be included alone, so that they can be rearranged without breaking anyone.
 *
 * This is the part of the embedding's API that channels need: values, codecs,
 * the messenger, method and event channels, and the plugin registrar. Unless
 * a function says otherwise, it belongs on the main thread.
 */
#define __FLUTTER_LINUX_INSIDE__

#include <flutter_linux/fl_binary_messenger.h>
#include <flutter_linux/fl_event_channel.h>
#include <flutter_linux/fl_message_codec.h>
#include <flutter_linux/fl_method_call.h>
#include <flutter_linux/fl_method_channel.h>
#include <flutter_linux/fl_method_codec.h>
#include <flutter_linux/fl_method_response.h>
#include <flutter_linux/fl_plugin_registrar.h>
#include <flutter_linux/fl_plugin_registry.h>
#include <flutter_linux/fl_standard_message_codec.h>
#include <flutter_linux/fl_standard_method_codec.h>
#include <flutter_linux/fl_value.h>

#undef __FLUTTER_LINUX_INSIDE__

#endif /* CORVANE_FLUTTER_LINUX_FLUTTER_LINUX_H_ */
