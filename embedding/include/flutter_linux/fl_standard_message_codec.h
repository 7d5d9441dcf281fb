#ifndef CORVANE_FLUTTER_LINUX_FL_STANDARD_MESSAGE_CODEC_H_
#define CORVANE_FLUTTER_LINUX_FL_STANDARD_MESSAGE_CODEC_H_

#if !defined(__FLUTTER_LINUX_INSIDE__) && !defined(FLUTTER_LINUX_COMPILATION)
#error "Include <flutter_linux/flutter_linux.h>, not its parts."
#endif

#include <flutter_linux/fl_message_codec.h>
#include <gmodule.h>

G_BEGIN_DECLS

G_MODULE_EXPORT
G_DECLARE_DERIVABLE_TYPE(FlStandardMessageCodec, fl_standard_message_codec, FL,
                         STANDARD_MESSAGE_CODEC, FlMessageCodec)

/*
 * FlStandardMessageCodec: the binary encoding of Flutter's standard codec,
 * little endian, aligned from the start of the message. A subclass that knows
 * further types overrides both functions and calls the parent's for the rest;
 * the order is part of the binary interface.
 */
struct _FlStandardMessageCodecClass {
  FlMessageCodecClass parent_class;

  /* Appends the type byte and the content of `value`. */
  gboolean (*write_value)(FlStandardMessageCodec* codec, GByteArray* buffer,
                          FlValue* value, GError** error);

  /* Reads the content of a value whose type byte has just been read. */
  FlValue* (*read_value_of_type)(FlStandardMessageCodec* codec, GBytes* buffer,
                                 size_t* offset, int type, GError** error);
};

/* Transfer full. */
G_MODULE_EXPORT
FlStandardMessageCodec* fl_standard_message_codec_new(void);

/* Appends a size in its shortest form: 1, 3 or 5 bytes. */
G_MODULE_EXPORT
void fl_standard_message_codec_write_size(FlStandardMessageCodec* codec,
                                          GByteArray* buffer, uint32_t size);

/* Reads a size at `offset` and moves it on; FALSE with `error` set if the
 * buffer ends before. */
G_MODULE_EXPORT
gboolean fl_standard_message_codec_read_size(FlStandardMessageCodec* codec,
                                             GBytes* buffer, size_t* offset,
                                             uint32_t* value, GError** error);

/* Appends a value (NULL as null); FALSE with `error` set on a type that the
 * codec lacks and on values nested too deeply. The buffer then holds a part. */
G_MODULE_EXPORT
gboolean fl_standard_message_codec_write_value(FlStandardMessageCodec* codec,
                                               GByteArray* buffer,
                                               FlValue* value, GError** error);

/* Reads the value at `offset` and moves it on. Transfer full; NULL with
 * `error` set on malformed bytes and on values nested too deeply. */
G_MODULE_EXPORT
FlValue* fl_standard_message_codec_read_value(FlStandardMessageCodec* codec,
                                              GBytes* buffer, size_t* offset,
                                              GError** error);

G_END_DECLS

#endif /* CORVANE_FLUTTER_LINUX_FL_STANDARD_MESSAGE_CODEC_H_ */
