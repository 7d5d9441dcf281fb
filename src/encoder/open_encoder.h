// Opening of the AAC codec behind an AdtsAacEncoder. Worker thread.
#ifndef CORVANE_SRC_ENCODER_OPEN_ENCODER_H_
#define CORVANE_SRC_ENCODER_OPEN_ENCODER_H_

#include <algorithm>
#include <cstdint>
#include <string>

#include "adts/stream_config.h"
#include "encoder/adts_aac_encoder.h"
#include "report/log_relay.h"
#include "report/native_error.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

constexpr char kAacEncoderName[] = "aac";

#ifdef AV_PROFILE_AAC_LOW  // the name in newer releases
constexpr int kAacLowComplexity = AV_PROFILE_AAC_LOW;
#else
constexpr int kAacLowComplexity = FF_PROFILE_AAC_LOW;
#endif

int AdtsAacEncoder::Open(NativeError* error) {
  if (!OpenCodec(error) || !PrepareFrame(error)) {
    Release();
    return 1;
  }
  frame_fill = 0;
  next_pts = 0;
  Reconcile();
  log(kLevelInfo, std::string("AAC encoder ") + codec->codec->name +
                      " started rate=" + std::to_string(sample_rate) +
                      " channels=" + std::to_string(channels) +
                      " bitRate=" + std::to_string(bit_rate));
  return 0;
}

bool AdtsAacEncoder::OpenCodec(NativeError* error) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(kAacEncoderName);
  if (encoder == nullptr) {
    return Fail(error, "libavcodec has no AAC encoder");
  }
  codec.reset(avcodec_alloc_context3(encoder));
  frame.reset(av_frame_alloc());
  packet.reset(av_packet_alloc());
  if (!codec || !frame || !packet) {
    return FailAv(error, "codec allocation", AVERROR(ENOMEM));
  }
  codec->sample_rate = sample_rate;
  codec->bit_rate = bit_rate;
  codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec->profile = kAacLowComplexity;
  codec->time_base = {1, sample_rate};
  av_channel_layout_default(&codec->ch_layout, channels);
  const int opened = avcodec_open2(codec.get(), encoder, nullptr);
  if (opened < 0) {
    return FailAv(error, "avcodec_open2", opened);
  }
  if (codec->frame_size != kAacFrameSize) {
    return Fail(error, "AAC encoder frame size " +
                           std::to_string(codec->frame_size) + " is not " +
                           std::to_string(kAacFrameSize));
  }
  frame_size = kAacFrameSize;
  small_last_frame =
      (encoder->capabilities & AV_CODEC_CAP_SMALL_LAST_FRAME) != 0;
  return true;
}

bool AdtsAacEncoder::PrepareFrame(NativeError* error) {
  frame->nb_samples = frame_size;
  frame->format = AV_SAMPLE_FMT_FLTP;
  frame->sample_rate = sample_rate;
  int result = av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout);
  if (result >= 0) {
    result = av_frame_get_buffer(frame.get(), 0);
  }
  // One name for both: either way there is no buffer to fill.
  return result >= 0 || FailAv(error, "av_frame_get_buffer", result);
}

// Makes the headers say what the encoder really produces: a player believes
// them, so a wrong one plays at the wrong speed.
void AdtsAacEncoder::Reconcile() {
  const int size = std::max(codec->extradata_size, 0);
  adts::StreamConfig reported = {kAacLcObjectType, 0, 0};
  if (!adts::StreamConfigFromAudioSpecificConfig(
          codec->extradata, static_cast<size_t>(size), &reported)) {
    log(kLevelWarning, "unusable AAC extradata (" + std::to_string(size) +
                           " bytes); keeping the configured stream parameters");
    return;
  }
  if (reported == stream_config) {
    return;
  }
  log(kLevelWarning,
      "AAC encoder reports objectType=" + std::to_string(reported.object_type) +
          " rate=" + std::to_string(reported.SampleRate()) +
          " channels=" + std::to_string(reported.channel_config) +
          ", configured rate=" + std::to_string(sample_rate) + " channels=" +
          std::to_string(channels) + "; headers follow the encoder");
  stream_config = reported;
}

}  // namespace

#endif  // CORVANE_SRC_ENCODER_OPEN_ENCODER_H_
