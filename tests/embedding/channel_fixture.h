// Verbs for tests of the channels, with a small messenger for an engine.
#ifndef CORVANE_TESTS_EMBEDDING_CHANNEL_FIXTURE_H_
#define CORVANE_TESTS_EMBEDDING_CHANNEL_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "handles.h"
#include "log_capture.h"
#include "small_messenger.h"

// The messages that the tests send and expect, worked out by hand.
inline const Octets kNullSuccess = {0, 0};

// "Not implemented" is an answer without bytes, given as NULL by some releases
// of the library and as no bytes by others: compare Answer.value_or(kNoBytes).
inline const Octets kNoBytes = {};

// A method call without arguments whose name is shorter than 254 bytes.
Octets call_of(const std::string& method);

// Whether an object lives, without keeping it alive.
class LifeWatch {
 public:
  explicit LifeWatch(gpointer object);
  ~LifeWatch();
  LifeWatch(const LifeWatch&) = delete;
  LifeWatch& operator=(const LifeWatch&) = delete;

  bool alive() const { return object_ != nullptr; }

 private:
  gpointer object_;
};

class ChannelTest : public testing::Test {
 protected:
  ~ChannelTest() override;

  // Shuts the messenger down while the whole test is there for its handlers.
  void TearDown() override;

  int Deliver(const std::string& channel, const Octets& message) {
    return deliver(messenger_.get(), channel, message);
  }

  void ShutDown() { shut_down(messenger_.get()); }

  MessengerState& state() { return state_of(messenger_.get()); }

  FlMethodCodec* codec() { return FL_METHOD_CODEC(codec_.get()); }

  bool WasAnswered(int number) { return state().answers.count(number) != 0; }

  // The answer to a message that must have one.
  Message AnswerTo(int number);

  LogCapture logs_;
  Owned<FlBinaryMessenger> messenger_{small_messenger_new()};
  Owned<FlStandardMethodCodec> codec_{fl_standard_method_codec_new()};
};

#endif  // CORVANE_TESTS_EMBEDDING_CHANNEL_FIXTURE_H_
