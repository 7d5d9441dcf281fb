// Event channels: listening, cancelling, and what is sent.
#include "channel_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class EventChannelTest : public ChannelTest {
 protected:
  static FlMethodErrorResponse* Listen(FlEventChannel*, FlValue* args,
                                       gpointer test) {
    return static_cast<EventChannelTest*>(test)->Note("listen", args);
  }

  static FlMethodErrorResponse* Cancel(FlEventChannel*, FlValue* args,
                                       gpointer test) {
    return static_cast<EventChannelTest*>(test)->Note("cancel", args);
  }

  FlMethodErrorResponse* Note(const char* what, FlValue* args) {
    seen_.push_back(std::string(what) + "(" + text_of(args) + ")");
    return failure_.release();
  }

  static void CountDestroyed(gpointer test) {
    ++static_cast<EventChannelTest*>(test)->destroyed_;
  }

  void SetHandlers() {
    fl_event_channel_set_stream_handlers(channel_.get(), Listen, Cancel, this,
                                         CountDestroyed);
  }

  // The only thing that was sent, which must want no answer.
  Message OnlySent() {
    EXPECT_EQ(state().sent.size(), 1u);
    if (state().sent.empty()) return std::nullopt;
    EXPECT_EQ(state().sent[0].channel, "events");
    EXPECT_FALSE(state().sent[0].wants_answer);
    return state().sent[0].message;
  }

  std::vector<std::string> seen_;
  int destroyed_ = 0;
  Owned<FlMethodErrorResponse> failure_;  // The next handler returns it.
  Owned<FlEventChannel> channel_{
      fl_event_channel_new(messenger_.get(), "events", codec())};
};

TEST_F(EventChannelTest, ListenAndCancelReachTheirHandlers) {
  SetHandlers();
  const int listen =
      Deliver("events", {7, 6, 'l', 'i', 's', 't', 'e', 'n', 12, 1, 1});
  const int cancel = Deliver("events", call_of("cancel"));
  EXPECT_THAT(seen_, ElementsAre("listen([true])", "cancel(null)"));
  EXPECT_EQ(AnswerTo(listen), kNullSuccess);
  EXPECT_EQ(AnswerTo(cancel), kNullSuccess);
}

TEST_F(EventChannelTest, AHandlersErrorIsTheAnswerAndTaken) {
  SetHandlers();
  for (const char* request : {"listen", "cancel"}) {
    failure_.reset(fl_method_error_response_new("E", "m", nullptr));
    const LifeWatch failure(failure_.get());
    EXPECT_EQ(AnswerTo(Deliver("events", call_of(request))),
              (Octets{1, 7, 1, 'E', 7, 1, 'm', 0}));
    EXPECT_FALSE(failure.alive());
  }
}

TEST_F(EventChannelTest, WithoutHandlersBothAreAccepted) {
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("listen"))), kNullSuccess);
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("cancel"))), kNullSuccess);
}

TEST_F(EventChannelTest, EitherHandlerMayBeLeftOut) {
  fl_event_channel_set_stream_handlers(channel_.get(), nullptr, Cancel, this,
                                       nullptr);
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("listen"))), kNullSuccess);
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("cancel"))), kNullSuccess);
  EXPECT_THAT(seen_, ElementsAre("cancel(null)"));
}

TEST_F(EventChannelTest, ListeningTwiceCallsTheHandlerTwice) {
  SetHandlers();
  Deliver("events", call_of("listen"));
  Deliver("events", call_of("listen"));
  EXPECT_EQ(seen_.size(), 2u);
}

TEST_F(EventChannelTest, AnotherRequestGetsTheCodeError) {
  SetHandlers();
  const Message answer = AnswerTo(Deliver("events", call_of("pause")));
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(Octets(answer->begin(), answer->begin() + 8),
            (Octets{1, 7, 5, 'e', 'r', 'r', 'o', 'r'}));
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(EventChannelTest, WhatDoesNotDecodeWarnsAndIsAnsweredWithNull) {
  SetHandlers();
  for (const Octets& message : {Octets{}, Octets{99}, Octets{7, 9, 'l'}}) {
    EXPECT_EQ(AnswerTo(Deliver("events", message)), std::nullopt);
    EXPECT_THAT(logs_.Take(), ElementsAre(StartsWith("warning: ")));
  }
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(EventChannelTest, AnEventIsASuccessEnvelope) {
  const Value event(fl_value_new_int(1));
  g_autoptr(GError) error = nullptr;
  EXPECT_TRUE(
      fl_event_channel_send(channel_.get(), event.get(), nullptr, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(OnlySent(), (Octets{0, 3, 1, 0, 0, 0}));
}

TEST_F(EventChannelTest, NoEventIsACriticalAndNotSent) {
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(fl_event_channel_send(channel_.get(), nullptr, nullptr, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_THAT(logs_.Take(), ElementsAre(CriticalOf("fl_event_channel_send")));
  EXPECT_THAT(state().sent, IsEmpty());
}

TEST_F(EventChannelTest, AnErrorEventIsAnErrorEnvelope) {
  const Value details(fl_value_new_bool(false));
  EXPECT_TRUE(fl_event_channel_send_error(channel_.get(), "E", "m",
                                          details.get(), nullptr, nullptr));
  EXPECT_EQ(OnlySent(), (Octets{1, 7, 1, 'E', 7, 1, 'm', 2}));
}

TEST_F(EventChannelTest, AnErrorEventMustHaveAMessage) {
  EXPECT_FALSE(fl_event_channel_send_error(channel_.get(), "E", nullptr,
                                           nullptr, nullptr, nullptr));
  EXPECT_THAT(logs_.Take(),
              ElementsAre(CriticalOf("fl_event_channel_send_error")));
  EXPECT_THAT(state().sent, IsEmpty());
}

TEST_F(EventChannelTest, TheEndOfTheStreamIsNoBytesAtAll) {
  EXPECT_TRUE(
      fl_event_channel_send_end_of_stream(channel_.get(), nullptr, nullptr));
  EXPECT_EQ(OnlySent(), std::nullopt);
}

TEST_F(EventChannelTest, AnEventWithoutEncodingIsAnErrorAndNotSent) {
  const Value custom(fl_value_new_custom(1, nullptr, nullptr));
  g_autoptr(GError) error = nullptr;
  EXPECT_FALSE(
      fl_event_channel_send(channel_.get(), custom.get(), nullptr, &error));
  EXPECT_TRUE(g_error_matches(error, FL_MESSAGE_CODEC_ERROR,
                              FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE));
  EXPECT_THAT(state().sent, IsEmpty());
}

TEST_F(EventChannelTest, AnAnswerThatFailsIsWarnedOf) {
  state().response_failure = MessengerState::Failure::kError;
  EXPECT_FALSE(WasAnswered(Deliver("events", call_of("listen"))));
  EXPECT_THAT(logs_.Take(),
              ElementsAre(StartsWith("warning: "),
                          "critical: message 1 was never answered"));
}

TEST_F(EventChannelTest, AHandlersErrorWithoutEncodingIsAnsweredWithNull) {
  SetHandlers();
  const Value custom(fl_value_new_custom(1, nullptr, nullptr));
  failure_.reset(fl_method_error_response_new("E", nullptr, custom.get()));
  EXPECT_EQ(AnswerTo(Deliver("events", call_of("listen"))), std::nullopt);
  EXPECT_THAT(logs_.Take(), ElementsAre(StartsWith("warning: ")));
}

TEST_F(EventChannelTest, ReplacingTheHandlersRunsTheFormersDestroyNotify) {
  SetHandlers();
  SetHandlers();
  EXPECT_EQ(destroyed_, 1);
  fl_event_channel_set_stream_handlers(channel_.get(), nullptr, nullptr,
                                       nullptr, nullptr);
  EXPECT_EQ(destroyed_, 2);
  Deliver("events", call_of("listen"));
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(EventChannelTest, GivingUpTheOwnReferenceClosesNothing) {
  SetHandlers();
  channel_.reset();
  Deliver("events", call_of("listen"));
  EXPECT_EQ(seen_.size(), 1u);
  EXPECT_EQ(destroyed_, 0);
}

TEST_F(EventChannelTest, ClosingRemovesTheHandlersAndNotifiesAtOnce) {
  SetHandlers();
  ShutDown();
  EXPECT_EQ(destroyed_, 1);
  channel_.reset();
  EXPECT_EQ(destroyed_, 1);
}

TEST_F(EventChannelTest, ClosingNotifiesWhileTheChannelIsThere) {
  struct Witness {
    LifeWatch* watch;
    std::string order;
  } witness;
  LifeWatch watch(channel_.get());
  witness.watch = &watch;
  fl_event_channel_set_stream_handlers(
      channel_.get(), nullptr, nullptr, &witness, [](gpointer data) {
        auto* witness = static_cast<Witness*>(data);
        witness->order += witness->watch->alive() ? "alive" : "gone";
      });
  channel_.reset();
  ShutDown();
  EXPECT_EQ(witness.order, "alive");
  EXPECT_FALSE(watch.alive());
}

TEST_F(EventChannelTest, ASecondChannelOfTheNameClosesTheFirst) {
  SetHandlers();
  const Owned<FlEventChannel> second(
      fl_event_channel_new(messenger_.get(), "events", codec()));
  EXPECT_EQ(destroyed_, 1);
  channel_.reset();  // The first one's end must not close the second.
  Deliver("events", call_of("listen"));
  EXPECT_THAT(seen_, IsEmpty());
}

TEST_F(EventChannelTest, HandlersOfAClosedChannelAreTakenSilently) {
  ShutDown();
  SetHandlers();
  EXPECT_EQ(destroyed_, 0);
  channel_.reset();
  EXPECT_EQ(destroyed_, 1);
}

TEST_F(EventChannelTest, AnEventAfterShutdownIsTrueAndNotSent) {
  ShutDown();
  const Value event(fl_value_new_int(1));
  g_autoptr(GError) error = nullptr;
  EXPECT_TRUE(
      fl_event_channel_send(channel_.get(), event.get(), nullptr, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_THAT(state().sent, IsEmpty());
}

}  // namespace
