#include "channel_fixture.h"

#include <algorithm>

Octets call_of(const std::string& method) {
  Octets message(method.size() + 3);
  message[0] = 7;
  message[1] = static_cast<uint8_t>(method.size());
  std::copy(method.begin(), method.end(), message.begin() + 2);
  return message;  // the last byte, 0, is the null argument
}

LifeWatch::LifeWatch(gpointer object) : object_(object) {
  g_object_add_weak_pointer(G_OBJECT(object_), &object_);
}

LifeWatch::~LifeWatch() {
  if (alive()) g_object_remove_weak_pointer(G_OBJECT(object_), &object_);
}

void ChannelTest::TearDown() {
  if (!state().shut_down) ShutDown();
}

// Channels and messenger hold each other until the messenger shuts down; then
// nothing may be left of it.
ChannelTest::~ChannelTest() {
  const LifeWatch messenger(messenger_.get());
  messenger_.reset();
  EXPECT_FALSE(messenger.alive()) << "somebody still holds the messenger";
}

Message ChannelTest::AnswerTo(int number) {
  EXPECT_TRUE(WasAnswered(number)) << "message " << number;
  return state().answers[number];
}
