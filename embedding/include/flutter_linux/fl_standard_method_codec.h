#ifndef CORVANE_FLUTTER_LINUX_FL_STANDARD_METHOD_CODEC_H_
#define CORVANE_FLUTTER_LINUX_FL_STANDARD_METHOD_CODEC_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_method_codec.h>
#include <flutter_linux/fl_standard_message_codec.h>
#include <gmodule.h>

G_BEGIN_DECLS

/* FlStandardMethodCodec: method calls in the standard message encoding. */
G_MODULE_EXPORT
G_DECLARE_FINAL_TYPE(FlStandardMethodCodec, fl_standard_method_codec, FL,
                     STANDARD_METHOD_CODEC, FlMethodCodec)

/* Transfer full. */
G_MODULE_EXPORT
FlStandardMethodCodec* fl_standard_method_codec_new(void);

/* Transfer full. Values go through `message_codec`, of which the new codec
 * takes its own reference. */
G_MODULE_EXPORT
FlStandardMethodCodec* fl_standard_method_codec_new_with_message_codec(
    FlStandardMessageCodec* message_codec);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_STANDARD_METHOD_CODEC_H_ */
