// What method channels and their calls know of each other. Not exported.
#ifndef CORVANE_EMBEDDING_FL_METHOD_CHANNEL_PRIVATE_H_
#define CORVANE_EMBEDDING_FL_METHOD_CHANNEL_PRIVATE_H_

#include <flutter_linux/flutter_linux.h>

namespace embedding {

// Transfer full; takes its own references and copies the name.
FlMethodCall* new_method_call(const gchar* name, FlValue* args,
                              FlMethodChannel* channel,
                              FlBinaryMessengerResponseHandle* response_handle);

// Encodes the response and sends it by the channel's messenger. May return
// FALSE without an error, as messengers do on a second response.
gboolean send_method_response(FlMethodChannel* channel,
                              FlBinaryMessengerResponseHandle* response_handle,
                              FlMethodResponse* response, GError** error);

}  // namespace embedding

#endif  // CORVANE_EMBEDDING_FL_METHOD_CHANNEL_PRIVATE_H_
