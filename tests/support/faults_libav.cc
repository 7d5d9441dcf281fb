// Overrides of the libavcodec and libavutil calls that the plugin makes.
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "support/codec_faults.h"
#include "support/faults_intercept.h"

using corvane_test::Allocated;
using corvane_test::Freed;
using corvane_test::Intercept;
using corvane_test::Kind;
using corvane_test::Next;
using corvane_test::PluginCall;
using corvane_test::Watched;

namespace {

// FFmpeg's AVCodec is the head of a larger record, so a changed copy of it must
// never get back into libavcodec: each stands here with the encoder it is of.
// Kept for good, because the plugin may hold one for as long as it likes.
struct Feigned {
  std::mutex mutex;
  std::map<const AVCodec*, const AVCodec*> real_of;
};

Feigned& feigned() {
  static Feigned& only = *new Feigned;
  return only;
}

const AVCodec* RealCodec(const AVCodec* codec) {
  const std::lock_guard<std::mutex> lock(feigned().mutex);
  const auto found = feigned().real_of.find(codec);
  return found == feigned().real_of.end() ? codec : found->second;
}

const AVCodec* Feign(const AVCodec* real,
                     const std::function<void(AVCodec&)>& change) {
  auto* copy = new AVCodec(*real);
  change(*copy);
  const std::lock_guard<std::mutex> lock(feigned().mutex);
  feigned().real_of[copy] = real;
  return copy;
}

// Calls that answer with null or with a negative libav error when they fail.
PluginCall Allocation(const char* name) {
  PluginCall call;
  call.name = name;
  return call;
}

PluginCall Libav(const char* name) {
  PluginCall call;
  call.name = name;
  call.averror = true;
  return call;
}

// Releases and can't fail.
template <typename Object, typename Real>
void InterceptFree(const char* name, Kind kind, Object** object, Real real) {
  PluginCall call;
  call.name = name;
  call.can_fail = false;
  Intercept<int>(&call, [&](PluginCall&) {
    Freed(kind, *object);
    real(object);
    return 0;
  });
}

template <typename Object, typename Real>
Object* InterceptAlloc(const char* name, Kind kind, Real real) {
  PluginCall call = Allocation(name);
  return Intercept<Object*>(&call, [&](PluginCall&) {
    Object* object = real();
    Allocated(kind, object);
    return object;
  });
}

}  // namespace

#define CORVANE_WATCHED Watched(__builtin_return_address(0))

extern "C" {

const AVCodec* avcodec_find_encoder_by_name(const char* name) {
  static const auto real =
      Next<const AVCodec* (*)(const char*)>("avcodec_find_encoder_by_name");
  if (!CORVANE_WATCHED) {
    return real(name);
  }
  PluginCall call = Allocation("avcodec_find_encoder_by_name");
  Intercept<const AVCodec*>(&call, [&](PluginCall& made) {
    made.codec = real(name);
    return made.codec;
  });
  return call.codec;  // a hook may have put another one there
}

AVCodecContext* avcodec_alloc_context3(const AVCodec* codec) {
  static const auto real =
      Next<AVCodecContext* (*)(const AVCodec*)>("avcodec_alloc_context3");
  if (!CORVANE_WATCHED) {
    return real(codec);
  }
  return InterceptAlloc<AVCodecContext>("avcodec_alloc_context3",
                                        Kind::kContext,
                                        [&] { return real(RealCodec(codec)); });
}

AVFrame* av_frame_alloc() {
  static const auto real = Next<AVFrame* (*)()>("av_frame_alloc");
  return CORVANE_WATCHED
             ? InterceptAlloc<AVFrame>("av_frame_alloc", Kind::kFrame, real)
             : real();
}

AVPacket* av_packet_alloc() {
  static const auto real = Next<AVPacket* (*)()>("av_packet_alloc");
  return CORVANE_WATCHED
             ? InterceptAlloc<AVPacket>("av_packet_alloc", Kind::kPacket, real)
             : real();
}

int avcodec_open2(AVCodecContext* context, const AVCodec* codec,
                  AVDictionary** options) {
  static const auto real =
      Next<int (*)(AVCodecContext*, const AVCodec*, AVDictionary**)>(
          "avcodec_open2");
  if (!CORVANE_WATCHED) {
    return real(context, codec, options);
  }
  PluginCall call = Libav("avcodec_open2");
  call.context = context;
  return Intercept<int>(&call, [&](PluginCall&) {
    return real(context, RealCodec(codec), options);
  });
}

int av_channel_layout_copy(AVChannelLayout* to, const AVChannelLayout* from) {
  static const auto real =
      Next<int (*)(AVChannelLayout*, const AVChannelLayout*)>(
          "av_channel_layout_copy");
  if (!CORVANE_WATCHED) {
    return real(to, from);
  }
  PluginCall call = Libav("av_channel_layout_copy");
  return Intercept<int>(&call, [&](PluginCall&) { return real(to, from); });
}

int av_frame_get_buffer(AVFrame* frame, int align) {
  static const auto real = Next<int (*)(AVFrame*, int)>("av_frame_get_buffer");
  if (!CORVANE_WATCHED) {
    return real(frame, align);
  }
  PluginCall call = Libav("av_frame_get_buffer");
  call.frame = frame;
  return Intercept<int>(&call, [&](PluginCall&) { return real(frame, align); });
}

int av_frame_make_writable(AVFrame* frame) {
  static const auto real = Next<int (*)(AVFrame*)>("av_frame_make_writable");
  if (!CORVANE_WATCHED) {
    return real(frame);
  }
  PluginCall call = Libav("av_frame_make_writable");
  call.frame = frame;
  return Intercept<int>(&call, [&](PluginCall&) { return real(frame); });
}

int avcodec_send_frame(AVCodecContext* context, const AVFrame* frame) {
  static const auto real =
      Next<int (*)(AVCodecContext*, const AVFrame*)>("avcodec_send_frame");
  if (!CORVANE_WATCHED) {
    return real(context, frame);
  }
  PluginCall call = Libav("avcodec_send_frame");
  call.context = context;
  call.frame = frame;
  call.size = frame == nullptr ? 0 : frame->nb_samples;
  return Intercept<int>(&call,
                        [&](PluginCall&) { return real(context, frame); });
}

int avcodec_receive_packet(AVCodecContext* context, AVPacket* packet) {
  static const auto real =
      Next<int (*)(AVCodecContext*, AVPacket*)>("avcodec_receive_packet");
  if (!CORVANE_WATCHED) {
    return real(context, packet);
  }
  PluginCall call = Libav("avcodec_receive_packet");
  call.context = context;
  call.packet = packet;
  return Intercept<int>(&call,
                        [&](PluginCall&) { return real(context, packet); });
}

#define CORVANE_OVERRIDE_FREE(NAME, TYPE, KIND)             \
  void NAME(TYPE** object) {                                \
    static const auto real = Next<void (*)(TYPE**)>(#NAME); \
    if (CORVANE_WATCHED) {                                  \
      InterceptFree(#NAME, KIND, object, real);             \
    } else {                                                \
      real(object);                                         \
    }                                                       \
  }
CORVANE_OVERRIDE_FREE(avcodec_free_context, AVCodecContext, Kind::kContext)
CORVANE_OVERRIDE_FREE(av_frame_free, AVFrame, Kind::kFrame)
CORVANE_OVERRIDE_FREE(av_packet_free, AVPacket, Kind::kPacket)

}  // extern "C"

namespace corvane_test {

Rule EncoderDescribedAs(std::function<void(AVCodec&)> change) {
  return On("avcodec_find_encoder_by_name")
      .After([change = std::move(change)](PluginCall& call) {
        call.codec = Feign(call.codec, change);
      });
}

}  // namespace corvane_test
