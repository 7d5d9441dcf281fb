// A messenger as small as the rules allow: a table of handlers, and a record
// of what went through it. Tests stand where the engine stands.
#ifndef CORVANE_TESTS_EMBEDDING_SMALL_MESSENGER_H_
#define CORVANE_TESTS_EMBEDDING_SMALL_MESSENGER_H_

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "handles.h"

// Bytes, or none where a NULL went over the interface.
using Message = std::optional<Octets>;

struct MessengerState {
  struct Registration {
    FlBinaryMessengerMessageHandler handler;
    gpointer user_data;
    GDestroyNotify destroy_notify;
  };

  struct Sent {
    std::string channel;
    Message message;
    bool wants_answer;
  };

  std::map<std::string, Registration> table;
  std::map<int, Message> answers;  // By the number that Deliver gave.
  std::vector<Sent> sent;
  std::vector<std::string> settings;  // Calls of the two setters, as text.
  int delivered = 0;
  bool shut_down = false;

  // How sending fails: not, with an error, or with none.
  enum class Failure { kNone, kError, kSilent };
  Failure response_failure = Failure::kNone;
  Failure send_failure = Failure::kNone;
  Octets reply;  // What send_on_channel is answered with.
};

// Transfer full.
FlBinaryMessenger* small_messenger_new();

MessengerState& state_of(FlBinaryMessenger* messenger);

// Hands a message to the channel's handler; a channel without one is answered
// with NULL. Returns the message's number.
int deliver(FlBinaryMessenger* messenger, const std::string& channel,
            const Octets& message);

// The wrappers leave this one out: only the engine calls it.
void shut_down(FlBinaryMessenger* messenger);

#endif  // CORVANE_TESTS_EMBEDDING_SMALL_MESSENGER_H_
