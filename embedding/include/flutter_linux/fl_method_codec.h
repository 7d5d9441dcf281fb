#ifndef CORVANE_FLUTTER_LINUX_FL_METHOD_CODEC_H_
#define CORVANE_FLUTTER_LINUX_FL_METHOD_CODEC_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_method_response.h>
#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

G_MODULE_EXPORT
G_DECLARE_DERIVABLE_TYPE(FlMethodCodec, fl_method_codec, FL, METHOD_CODEC,
                         GObject)

/*
 * FlMethodCodec: turns method calls and their outcomes into bytes and back.
 * There are no wrappers: whoever needs an operation outside a channel calls it
 * through FL_METHOD_CODEC_GET_CLASS(). The order is part of the binary
 * interface. Results are transfer full; NULL or FALSE goes with `error` set.
 */
struct _FlMethodCodecClass {
  GObjectClass parent_class;

  /* `args` may be NULL, which is the same as null. */
  GBytes* (*encode_method_call)(FlMethodCodec* codec, const gchar* name,
                                FlValue* args, GError** error);

  /* `*name` is freed with g_free; absent arguments give a null value. */
  gboolean (*decode_method_call)(FlMethodCodec* codec, GBytes* message,
                                 gchar** name, FlValue** args, GError** error);

  /* `result` may be NULL, which is the same as null. */
  GBytes* (*encode_success_envelope)(FlMethodCodec* codec, FlValue* result,
                                     GError** error);

  /* `message` and `details` may be NULL. */
  GBytes* (*encode_error_envelope)(FlMethodCodec* codec, const gchar* code,
                                   const gchar* message, FlValue* details,
                                   GError** error);

  /* Fails on no bytes at all, which is how "not implemented" travels: test for
   * it first. */
  FlMethodResponse* (*decode_response)(FlMethodCodec* codec, GBytes* message,
                                       GError** error);
};

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_METHOD_CODEC_H_ */
