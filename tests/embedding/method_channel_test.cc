// Method channels: registration, the handler, and closing.
#include "channel_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class MethodChannelTest : public ChannelTest {
 protected:
  // What the handler saw.
  struct Seen {
    FlMethodChannel* channel;
    std::string call;
  };

  // Answers each call with null and notes it.
  static void Note(FlMethodChannel* channel, FlMethodCall* call,
                   gpointer test) {
    auto* self = static_cast<MethodChannelTest*>(test);
    self->seen_.push_back(
        {channel, std::string(fl_method_call_get_name(call)) + "(" +
                      text_of(fl_method_call_get_args(call)) + ")"});
    EXPECT_TRUE(fl_method_call_respond_success(call, nullptr, nullptr));
  }

  static void CountDestroyed(gpointer test) {
    ++static_cast<MethodChannelTest*>(test)->destroyed_;
  }

  void SetHandler() {
    fl_method_channel_set_method_call_handler(channel_.get(), Note, this,
                                              CountDestroyed);
  }

  std::vector<Seen> seen_;
  int destroyed_ = 0;
  Owned<FlMethodChannel> channel_{
      fl_method_channel_new(messenger_.get(), "calls", codec())};
};

TEST_F(MethodChannelTest, ACallReachesTheHandler) {
  SetHandler();
  const int number = Deliver("calls", {7, 1, 'm', 12, 1, 1});
  ASSERT_EQ(seen_.size(), 1u);
  EXPECT_EQ(seen_[0].channel, channel_.get());
  EXPECT_EQ(seen_[0].call, "m([true])");
  EXPECT_EQ(AnswerTo(number), kNullSuccess);
}

TEST_F(MethodChannelTest, AbsentArgumentsAreANullValue) {
  SetHandler();
  Deliver("calls", call_of("m"));
  ASSERT_EQ(seen_.size(), 1u);
  EXPECT_EQ(seen_[0].call, "m(null)");
}

TEST_F(MethodChannelTest, OnlyItsOwnNameReachesIt) {
  SetHandler();
  const int number = Deliver("call", call_of("m"));
  EXPECT_THAT(seen_, IsEmpty());
  EXPECT_EQ(AnswerTo(number), std::nullopt);
}

TEST_F(MethodChannelTest, GivingUpTheOwnReferenceClosesNothing) {
  SetHandler();
  const LifeWatch channel(channel_.get());
  channel_.reset();
  Deliver("calls", call_of("m"));
  EXPECT_EQ(seen_.size(), 1u);
  EXPECT_EQ(destroyed_, 0);
  EXPECT_TRUE(channel.alive());
}

TEST_F(MethodChannelTest, ReplacingTheHandlerRunsTheFormersDestroyNotify) {
  SetHandler();
  SetHandler();
  EXPECT_EQ(destroyed_, 1);
  Deliver("calls", call_of("m"));
  EXPECT_EQ(seen_.size(), 1u);
}

TEST_F(MethodChannelTest, WithoutAHandlerACallIsDroppedUnanswered) {
  SetHandler();
  fl_method_channel_set_method_call_handler(channel_.get(), nullptr, nullptr,
                                            nullptr);
  EXPECT_EQ(destroyed_, 1);
  const int number = Deliver("calls", call_of("m"));
  EXPECT_THAT(seen_, IsEmpty());
  EXPECT_FALSE(WasAnswered(number));
  EXPECT_THAT(logs_.Take(),
              ElementsAre("critical: message 1 was never answered"));
}

TEST_F(MethodChannelTest, WhatDoesNotDecodeIsLoggedAndDroppedUnanswered) {
  SetHandler();
  for (const Octets& message :
       {Octets{}, Octets{7, 9, 'm'}, Octets{99, 0}, Octets{3, 1, 0, 0, 0, 0},
        Octets{7, 1, 'm', 0, 0}}) {
    const int number = Deliver("calls", message);
    EXPECT_FALSE(WasAnswered(number));
    EXPECT_THAT(logs_.Take(),
                ElementsAre(StartsWith("warning: "),
                            "critical: message " + std::to_string(number) +
                                " was never answered"));
  }
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(MethodChannelTest, ClosingRunsTheDestroyNotifyAndLetsTheChannelGo) {
  SetHandler();
  const LifeWatch channel(channel_.get());
  channel_.reset();
  fl_binary_messenger_set_message_handler_on_channel(messenger_.get(), "calls",
                                                     nullptr, nullptr, nullptr);
  EXPECT_EQ(destroyed_, 1);
  EXPECT_FALSE(channel.alive());
}

TEST_F(MethodChannelTest, ClosingDisconnectsThenNotifiesThenReleases) {
  struct Witness {
    FlMethodChannel* channel;
    LifeWatch* watch;
    std::string order;
  } witness{channel_.get(), nullptr, ""};
  LifeWatch watch(channel_.get());
  witness.watch = &watch;
  fl_method_channel_set_method_call_handler(
      channel_.get(), [](FlMethodChannel*, FlMethodCall*, gpointer) {},
      &witness,
      [](gpointer data) {
        auto* witness = static_cast<Witness*>(data);
        witness->order += witness->watch->alive() ? "alive" : "gone";
        // Refused, since it is closed already: the notify runs at once.
        fl_method_channel_set_method_call_handler(
            witness->channel, nullptr, witness, [](gpointer inner) {
              static_cast<Witness*>(inner)->order += ", closed";
            });
      });
  channel_.reset();
  ShutDown();
  EXPECT_EQ(witness.order, "alive, closed");
  EXPECT_FALSE(watch.alive());
}

TEST_F(MethodChannelTest, SettingAHandlerOnAClosedChannelWarnsAndNotifies) {
  ShutDown();
  SetHandler();
  EXPECT_EQ(destroyed_, 1);
  EXPECT_THAT(logs_.Take(), ElementsAre(StartsWith("warning: ")));
}

TEST_F(MethodChannelTest, RemovingTheHandlerOfAClosedChannelIsSilent) {
  ShutDown();
  fl_method_channel_set_method_call_handler(channel_.get(), nullptr, nullptr,
                                            nullptr);
}

TEST_F(MethodChannelTest, ASecondChannelOfTheNameClosesTheFirst) {
  SetHandler();
  const Owned<FlMethodChannel> second(
      fl_method_channel_new(messenger_.get(), "calls", codec()));
  EXPECT_EQ(destroyed_, 1);
  fl_method_channel_set_method_call_handler(second.get(), Note, this, nullptr);
  channel_.reset();  // The first one's end must not close the second.
  Deliver("calls", call_of("m"));
  ASSERT_EQ(seen_.size(), 1u);
  EXPECT_EQ(seen_[0].channel, second.get());
}

TEST_F(MethodChannelTest, AHandlerMayCloseItsOwnChannel) {
  fl_method_channel_set_method_call_handler(
      channel_.get(),
      [](FlMethodChannel*, FlMethodCall* call, gpointer messenger) {
        fl_binary_messenger_set_message_handler_on_channel(
            FL_BINARY_MESSENGER(messenger), "calls", nullptr, nullptr, nullptr);
        EXPECT_TRUE(fl_method_call_respond_success(call, nullptr, nullptr));
      },
      messenger_.get(), nullptr);
  const LifeWatch channel(channel_.get());
  channel_.reset();
  EXPECT_EQ(AnswerTo(Deliver("calls", call_of("m"))), kNullSuccess);
  EXPECT_FALSE(channel.alive());
}

}  // namespace
