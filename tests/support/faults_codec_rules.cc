#include <cstring>
#include <utility>

#include "support/codec_faults.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace corvane_test {

namespace {

Rule OnceOpen(std::function<void(AVCodecContext&)> change) {
  return On("avcodec_open2")
      .After([change = std::move(change)](PluginCall& call) {
        if (call.result >= 0) {
          change(*call.context);
        }
      });
}

SentFrame CopyOf(const AVFrame* frame) {
  SentFrame copy;
  if (frame == nullptr) {
    return copy;
  }
  copy.samples = frame->nb_samples;
  copy.pts = frame->pts;
  for (int c = 0; c < frame->ch_layout.nb_channels; ++c) {
    const auto* plane = reinterpret_cast<const float*>(frame->extended_data[c]);
    copy.planes.emplace_back(plane, plane + frame->nb_samples);
  }
  return copy;
}

}  // namespace

Rule EncoderWithoutSmallLastFrame() {
  return EncoderDescribedAs([](AVCodec& codec) {
    codec.capabilities &= ~AV_CODEC_CAP_SMALL_LAST_FRAME;
  });
}

Rule FrameSizeOnceOpen(int samples) {
  return OnceOpen(
      [samples](AVCodecContext& context) { context.frame_size = samples; });
}

Rule ExtradataOnceOpen(std::vector<uint8_t> bytes) {
  return OnceOpen([bytes = std::move(bytes)](AVCodecContext& context) {
    av_freep(&context.extradata);
    context.extradata = static_cast<uint8_t*>(
        av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!bytes.empty()) {
      memcpy(context.extradata, bytes.data(), bytes.size());
    }
    context.extradata_size = static_cast<int>(bytes.size());
  });
}

Rule ExtradataSizeOnceOpen(int size) {
  return OnceOpen(
      [size](AVCodecContext& context) { context.extradata_size = size; });
}

Rule PacketsResizedTo(int size) {
  return On("avcodec_receive_packet").After([size](PluginCall& call) {
    AVPacket* packet = call.packet;
    if (call.result < 0) {
      return;
    }
    const int before = packet->size;
    if (size > before && av_grow_packet(packet, size - before) == 0) {
      memset(packet->data + before, 0, static_cast<size_t>(size - before));
    }
    av_shrink_packet(packet, size);
  });
}

SentFrames::SentFrames()
    : tap_(On("avcodec_send_frame").Before([this](PluginCall& call) {
        const std::lock_guard<std::mutex> lock(mutex_);
        frames_.push_back(CopyOf(call.frame));
      })) {}

std::vector<SentFrame> SentFrames::all() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return frames_;
}

}  // namespace corvane_test
