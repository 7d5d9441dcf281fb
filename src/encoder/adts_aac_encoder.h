// The AAC encoder of one capture: float-planar PCM in, ADTS frames out to the
// capture file, each the moment libavcodec produces it. Worker thread; dispose
// finishes it on the main thread once the worker has ended.
#ifndef CORVANE_SRC_ENCODER_ADTS_AAC_ENCODER_H_
#define CORVANE_SRC_ENCODER_ADTS_AAC_ENCODER_H_

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adts/frame.h"
#include "adts/stream_config.h"
#include "report/log_relay.h"
#include "report/native_error.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {

constexpr int32_t kAacFrameSize = 1024;  // samples per channel
constexpr int32_t kAacLcObjectType = 2;
constexpr uint64_t kBytesPerSample = 2;  // signed 16-bit PCM

struct AvDeleter {
  void operator()(AVCodecContext* it) const { avcodec_free_context(&it); }
  void operator()(AVFrame* it) const { av_frame_free(&it); }
  void operator()(AVPacket* it) const { av_packet_free(&it); }
};
template <typename T>
using AvPtr = std::unique_ptr<T, AvDeleter>;

// A codec failure can be met with a new codec, a failed write cannot.
enum SendResult { kOk = 0, kEncodeFailed = 1, kWriteFailed = 2 };

// Made closed; `Open` and `Finish` may alternate any number of times.
struct AdtsAacEncoder {
  using LogCallback =
      std::function<void(const char* level, const std::string& message)>;

  // `file` is borrowed, open for appending, and stays open until the last
  // `Finish`.
  AdtsAacEncoder(int file, std::string capture_path, int32_t rate,
                 int32_t channel_count, int64_t bits_per_second,
                 LogCallback log_callback);

  // Opens a codec (open_encoder.h); call it only while there is none. Returns
  // 0, or 1 with `error` filled.
  int Open(NativeError* error);

  // Encodes `input`, or ends the stream when it is null, and writes out every
  // packet that is ready.
  SendResult SendAndDrain(const AVFrame* input, NativeError* error);

  // Encodes what `frame` holds so far, writes out all that the codec still
  // holds, and frees it. True at once when no codec is open.
  bool Finish(NativeError* error);

  // Frees the codec with all that it still holds unwritten.
  void Release();

  const int fd;
  const std::string path;
  const int32_t sample_rate;  // Hz
  const int32_t channels;
  const int64_t bit_rate;          // bit/s
  const uint64_t bytes_per_frame;  // of one interleaved PCM sample frame
  const LogCallback log;
  adts::StreamConfig stream_config;  // what every header says

  std::vector<uint8_t> carry;  // an incomplete sample frame of earlier appends
  uint64_t carry_bytes = 0;

  AvPtr<AVCodecContext> codec;  // null while closed
  AvPtr<AVFrame> frame;         // being filled: float planar, `frame_size`
  AvPtr<AVPacket> packet;
  int32_t frame_size = kAacFrameSize;  // samples per channel
  bool small_last_frame = false;       // the codec takes a short last frame
  int32_t frame_fill = 0;              // samples per channel in `frame`
  int64_t next_pts = 0;                // samples per channel since `Open`

  std::vector<uint8_t> adts_buffer;  // reused for every frame
  uint64_t frames_written = 0;       // since construction

 private:
  bool OpenCodec(NativeError* error);
  bool PrepareFrame(NativeError* error);
  void Reconcile();
  void CompletePartialFrame();
  bool Drain(NativeError* error);
  SendResult WritePacket(NativeError* error);
  bool Fail(NativeError* error, const std::string& message) const;
  bool FailAv(NativeError* error, const char* what, int averror) const;
};

// Writes all of `bytes`; returns 0 or an errno value. A failing write whose
// errno reads 0 counts as a complete one.
int write_all(int fd, const std::vector<uint8_t>& bytes) {
  size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count =
        write(fd, bytes.data() + written, bytes.size() - written);
    if (count > 0) {
      written += static_cast<size_t>(count);
    } else if (count == 0) {
      return EIO;  // no progress and no reason: never spin on it
    } else if (errno != EINTR) {
      return errno;
    }
  }
  return 0;
}

AdtsAacEncoder::AdtsAacEncoder(int file, std::string capture_path, int32_t rate,
                               int32_t channel_count, int64_t bits_per_second,
                               LogCallback log_callback)
    : fd(file),
      path(std::move(capture_path)),
      sample_rate(rate),
      channels(channel_count),
      bit_rate(bits_per_second),
      bytes_per_frame(static_cast<uint64_t>(channel_count) * kBytesPerSample),
      log(std::move(log_callback)),
      stream_config{kAacLcObjectType, adts::FrequencyIndexOf(rate),
                    channel_count} {}

bool AdtsAacEncoder::Fail(NativeError* error,
                          const std::string& message) const {
  *error = plain_error(kErrEncodeFailed, message, path);
  return false;
}

bool AdtsAacEncoder::FailAv(NativeError* error, const char* what,
                            int averror) const {
  *error = ffmpeg_error(kErrEncodeFailed, what, path, averror);
  return false;
}

SendResult AdtsAacEncoder::SendAndDrain(const AVFrame* input,
                                        NativeError* error) {
  const int sent = avcodec_send_frame(codec.get(), input);
  if (sent < 0) {
    FailAv(error, "avcodec_send_frame", sent);
    return kEncodeFailed;
  }
  for (;;) {
    const int received = avcodec_receive_packet(codec.get(), packet.get());
    if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) {
      return kOk;
    }
    if (received < 0) {
      FailAv(error, "avcodec_receive_packet", received);
      return kEncodeFailed;
    }
    const SendResult written = WritePacket(error);
    if (written != kOk) {
      return written;
    }
  }
}

SendResult AdtsAacEncoder::WritePacket(NativeError* error) {
  const int size = packet->size;
  const bool fits = adts::Frame(stream_config, packet->data,
                                static_cast<size_t>(size), &adts_buffer);
  av_packet_unref(packet.get());
  if (!fits) {
    Fail(error, "AAC frame of " + std::to_string(size) +
                    " bytes does not fit an ADTS frame");
    return kEncodeFailed;
  }
  const int errnum = write_all(fd, adts_buffer);
  if (errnum != 0) {
    *error = errno_error(kErrWriteFailed, "Failed to append AAC frame", path,
                         errnum);
    return kWriteFailed;
  }
  ++frames_written;
  return kOk;
}

bool AdtsAacEncoder::Finish(NativeError* error) {
  if (!codec) {
    return true;
  }
  const bool nothing_sent = frame_fill == 0 && next_pts == 0;
  const bool finished = nothing_sent || Drain(error);
  Release();
  return finished;
}

bool AdtsAacEncoder::Drain(NativeError* error) {
  if (frame_fill > 0) {
    CompletePartialFrame();
    if (SendAndDrain(frame.get(), error) != kOk) {
      return false;
    }
  }
  return SendAndDrain(nullptr, error) == kOk;
}

// Fills up with silence unless the codec takes a short last frame.
void AdtsAacEncoder::CompletePartialFrame() {
  if (!small_last_frame) {
    for (int32_t channel = 0; channel < channels; ++channel) {
      auto* plane = reinterpret_cast<float*>(frame->extended_data[channel]);
      std::fill(plane + frame_fill, plane + frame_size, 0.0F);
    }
    frame_fill = frame_size;
  }
  frame->nb_samples = frame_fill;
  frame->pts = next_pts;
  next_pts += frame_fill;
  frame_fill = 0;
}

void AdtsAacEncoder::Release() {
  codec.reset();
  frame.reset();
  packet.reset();
  frame_fill = 0;
  next_pts = 0;
}

}  // namespace

#endif  // CORVANE_SRC_ENCODER_ADTS_AAC_ENCODER_H_
