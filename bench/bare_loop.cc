// The least that a program can do to record AAC: read PCM, convert it, send it
// to libavcodec, and write each packet behind an ADTS header with one call. No
// thread, no queue, no second thought on what fails. What `corvane record` may
// cost is measured against this.
//
//   bare_loop OUT.aac HZ CHANNELS BPS < PCM  (s16le, without a header)
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "adts/frame.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

constexpr int kFrameSize = 1024;  // samples per channel

void require(bool held) {
  if (!held) std::abort();
}

AVCodecContext* open_codec(int rate, int channels, int64_t bit_rate) {
  const AVCodec* const encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
  AVCodecContext* const codec = avcodec_alloc_context3(encoder);
  codec->sample_rate = rate;
  codec->bit_rate = bit_rate;
  codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec->time_base = {1, rate};
  av_channel_layout_default(&codec->ch_layout, channels);
  require(avcodec_open2(codec, encoder, nullptr) == 0);
  return codec;
}

AVFrame* make_frame(const AVCodecContext* codec) {
  AVFrame* const frame = av_frame_alloc();
  frame->nb_samples = kFrameSize;
  frame->format = AV_SAMPLE_FMT_FLTP;
  frame->sample_rate = codec->sample_rate;
  require(av_channel_layout_copy(&frame->ch_layout, &codec->ch_layout) == 0);
  require(av_frame_get_buffer(frame, 0) == 0);
  return frame;
}

size_t read_full(uint8_t* bytes, size_t size) {
  size_t filled = 0;
  for (ssize_t got = 1; filled < size && got > 0;) {
    got = read(STDIN_FILENO, bytes + filled, size - filled);
    filled += got > 0 ? static_cast<size_t>(got) : 0;
  }
  return filled;
}

void convert(const int16_t* pcm, size_t count, int channels, AVFrame* frame) {
  for (int channel = 0; channel < channels; ++channel) {
    auto* plane = reinterpret_cast<float*>(frame->extended_data[channel]);
    for (size_t i = 0; i < count; ++i) {
      plane[i] = static_cast<float>(pcm[i * channels + channel]) / 32768.0F;
    }
  }
  frame->nb_samples = static_cast<int>(count);
}

void send(AVCodecContext* codec, const AVFrame* frame, AVPacket* packet,
          const adts::StreamConfig& config, int fd) {
  static std::vector<uint8_t> adts_frame;
  require(avcodec_send_frame(codec, frame) == 0);
  while (avcodec_receive_packet(codec, packet) == 0) {
    require(adts::Frame(config, packet->data, static_cast<size_t>(packet->size),
                        &adts_frame));
    av_packet_unref(packet);
    require(write(fd, adts_frame.data(), adts_frame.size()) ==
            static_cast<ssize_t>(adts_frame.size()));
  }
}

}  // namespace

int main(int argc, char** argv) {
  require(argc == 5);
  const int rate = std::atoi(argv[2]);
  const int channels = std::atoi(argv[3]);
  AVCodecContext* codec = open_codec(rate, channels, std::atoll(argv[4]));
  AVFrame* frame = make_frame(codec);
  AVPacket* packet = av_packet_alloc();
  const adts::StreamConfig config = {2, adts::FrequencyIndexOf(rate), channels};
  const int fd = open(argv[1], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  const auto stride = static_cast<size_t>(channels) * sizeof(int16_t);
  std::vector<int16_t> pcm(kFrameSize * static_cast<size_t>(channels));
  auto* const bytes = reinterpret_cast<uint8_t*>(pcm.data());

  size_t size = read_full(bytes, kFrameSize * stride);
  for (int64_t at = 0; size >= stride; at += kFrameSize) {
    require(av_frame_make_writable(frame) == 0);
    convert(pcm.data(), size / stride, channels, frame);
    frame->pts = at;
    send(codec, frame, packet, config, fd);
    size = read_full(bytes, kFrameSize * stride);
  }
  send(codec, nullptr, packet, config, fd);
  require(close(fd) == 0);
  av_packet_free(&packet);
  av_frame_free(&frame);
  avcodec_free_context(&codec);
}
