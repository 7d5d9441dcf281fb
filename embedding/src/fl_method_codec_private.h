// FlMethodCodec's operations for the channels. Not exported: outside the
// library they are called through the class.
#ifndef CORVANE_EMBEDDING_FL_METHOD_CODEC_PRIVATE_H_
#define CORVANE_EMBEDDING_FL_METHOD_CODEC_PRIVATE_H_

#include <flutter_linux/flutter_linux.h>

namespace embedding {

// Answers `*bytes` for a response: transfer full, NULL for "not implemented".
// FALSE with `error` set if it can not be encoded.
gboolean encode_response(FlMethodCodec* codec, FlMethodResponse* response,
                         GBytes** bytes, GError** error);

// Understands no bytes at all (or NULL) as "not implemented", which the
// codec's own operation refuses. Transfer full.
FlMethodResponse* decode_response(FlMethodCodec* codec, GBytes* bytes,
                                  GError** error);

}  // namespace embedding

#endif  // CORVANE_EMBEDDING_FL_METHOD_CODEC_PRIVATE_H_
