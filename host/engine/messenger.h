// The engine's end of the channels: a binary messenger that stands where a
// running Flutter application has its own.
//
// Everything here belongs to the thread that owns the main context, except
// that responses may come from any thread.
#ifndef CORVANE_HOST_ENGINE_MESSENGER_H_
#define CORVANE_HOST_ENGINE_MESSENGER_H_

#include <flutter_linux/flutter_linux.h>

#include <functional>

namespace corvane {

// Takes the answer to one message, borrowed for the length of the call: NULL
// when nobody handles the channel or the method is not implemented. Runs on
// the thread that answers; not called once messenger_shutdown() has begun.
using ReplyHandler = std::function<void(GBytes* reply)>;

// Takes a message that the plugin sends, both borrowed; NULL bytes end an
// event stream. Not called after messenger_shutdown().
using OutgoingHandler =
    std::function<void(const char* channel, GBytes* message)>;

// A messenger whose table is empty and whose outgoing messages go nowhere.
// Transfer full. A channel holds a reference on its messenger, so dropping
// one's own is not enough: messenger_shutdown() first.
FlBinaryMessenger* messenger_new();

// Hands `message` (borrowed; NULL counts as empty) to the handler of `channel`
// as the Dart side would. `on_reply` may be empty and is called at most once,
// possibly before this returns. After shutdown there are no handlers left, so
// the answer is NULL.
void messenger_deliver(FlBinaryMessenger* messenger, const char* channel,
                       GBytes* message, ReplyHandler on_reply);

// Replaces the receiver of what the plugin sends; empty for none.
void messenger_set_outgoing(FlBinaryMessenger* messenger,
                            OutgoingHandler on_outgoing);

// Drops every handler, as an engine does when it goes down: the whole table is
// detached first, then each destroy notify runs. From here on handlers are
// refused, and responses and events vanish and count as sent. Idempotent.
void messenger_shutdown(FlBinaryMessenger* messenger);

}  // namespace corvane

#endif  // CORVANE_HOST_ENGINE_MESSENGER_H_
