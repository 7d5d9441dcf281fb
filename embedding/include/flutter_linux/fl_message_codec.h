#ifndef CORVANE_FLUTTER_LINUX_FL_MESSAGE_CODEC_H_
#define CORVANE_FLUTTER_LINUX_FL_MESSAGE_CODEC_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_value.h>
#include <gio/gio.h>
#include <glib-object.h>
#include <gmodule.h>

G_BEGIN_DECLS

/*
 * Why a message could not be encoded or decoded. The values are part of the
 * binary interface.
 */
#define FL_MESSAGE_CODEC_ERROR fl_message_codec_error_quark()

typedef enum {
  FL_MESSAGE_CODEC_ERROR_FAILED,          /* None of the other reasons. */
  FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA,     /* The message ends too early. */
  FL_MESSAGE_CODEC_ERROR_ADDITIONAL_DATA, /* Bytes are left after it. */
  FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE /* A type that the codec lacks. */
} FlMessageCodecError;

G_MODULE_EXPORT
GQuark fl_message_codec_error_quark(void) G_GNUC_CONST;

G_MODULE_EXPORT
G_DECLARE_DERIVABLE_TYPE(FlMessageCodec, fl_message_codec, FL, MESSAGE_CODEC,
                         GObject)

/*
 * FlMessageCodec: turns one value into the bytes of a message and back.
 * Subclasses fill in both functions; the order is part of the binary
 * interface.
 */
struct _FlMessageCodecClass {
  GObjectClass parent_class;

  /* Returns a new reference, or NULL and sets the error. */
  GBytes* (*encode_message)(FlMessageCodec* codec, FlValue* message,
                            GError** error);

  /* Returns a new reference, or NULL and sets the error. */
  FlValue* (*decode_message)(FlMessageCodec* codec, GBytes* message,
                             GError** error);
};

/* Transfer full, NULL with `error` set on failure. NULL encodes as null. */
G_MODULE_EXPORT
GBytes* fl_message_codec_encode_message(FlMessageCodec* codec, FlValue* message,
                                        GError** error);

/* Transfer full, NULL with `error` set on failure. The standard codec decodes
 * an empty message to a null value. */
G_MODULE_EXPORT
FlValue* fl_message_codec_decode_message(FlMessageCodec* codec, GBytes* message,
                                         GError** error);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_MESSAGE_CODEC_H_ */
