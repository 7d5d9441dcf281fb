// The fault layer's codec side proved on calls of this program.
#include <gtest/gtest.h>

#include "support/codec_faults.h"
#include "support/faults.h"

namespace corvane_test {
namespace {

TEST(CodecInterposerTest, LibavCallsFailTheirOwnWay) {
  const WatchProgram watch;
  const Held before = HeldNow();
  {
    Fault fault(On("av_frame_alloc").Fail(ENOMEM));
    EXPECT_EQ(av_frame_alloc(), nullptr);
  }
  AVFrame* frame = av_frame_alloc();
  EXPECT_EQ(HeldNow().frames, before.frames + 1);
  {
    Fault fault(On("av_frame_make_writable").Fail(ENOMEM));
    EXPECT_EQ(av_frame_make_writable(frame), AVERROR(ENOMEM));
  }
  {
    Fault fault(On("av_frame_get_buffer").Fail(AVERROR_EXTERNAL));
    EXPECT_EQ(av_frame_get_buffer(frame, 0), AVERROR_EXTERNAL);
  }
  {
    Fault without_a_reason(On("av_frame_get_buffer").Fail(0));
    EXPECT_EQ(av_frame_get_buffer(frame, 0), AVERROR_UNKNOWN);
  }
  av_frame_free(&frame);
  EXPECT_EQ(HeldNow(), before);
}

TEST(CodecInterposerTest, FeignedEncoderWorksLikeTheRealOne) {
  const WatchProgram watch;
  Fault fault(EncoderDescribedAs([](AVCodec& codec) { codec.name = "other"; }));
  const AVCodec* codec = avcodec_find_encoder_by_name("aac");
  EXPECT_STREQ(codec->name, "other");
  AVCodecContext* context = avcodec_alloc_context3(codec);
  context->sample_rate = 48000;
  context->sample_fmt = AV_SAMPLE_FMT_FLTP;
  av_channel_layout_default(&context->ch_layout, 1);
  EXPECT_EQ(avcodec_open2(context, codec, nullptr), 0);
  EXPECT_EQ(context->frame_size, 1024);
  avcodec_free_context(&context);
}

}  // namespace
}  // namespace corvane_test
