// "append": one chunk of PCM into the open capture. Worker thread.
#ifndef CORVANE_SRC_RECORDING_APPEND_H_
#define CORVANE_SRC_RECORDING_APPEND_H_

#include <endian.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "encoder/adts_aac_encoder.h"
#include "encoder/open_encoder.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/plugin_state.h"

namespace {

// A codec that keeps failing is not restarted for ever.
constexpr int kMaxCodecRestarts = 2;

// Whole interleaved sample frames, and how many of them are encoded already.
struct PcmCursor {
  const uint8_t* bytes;  // borrowed
  uint64_t total;        // sample frames
  uint64_t consumed;

  bool AtEnd() const { return consumed == total; }
};

// One step of a signed 16-bit sample: -1.0 to 0.99997 in all, exactly.
constexpr float kStep = 3.0517578125e-05F;

// Sample frames converted at a time. A fixed number of them, and planes that
// can't overlap the PCM, are what compilers vectorise already at -O2.
constexpr uint64_t kBlock = 16;

float sample_at(const uint8_t* bytes) {
  uint16_t sample;
  std::memcpy(&sample, bytes, sizeof(sample));
  return static_cast<float>(static_cast<int16_t>(le16toh(sample))) * kStep;
}

void convert_mono_block(const uint8_t* __restrict in, float* __restrict out) {
  for (uint64_t i = 0; i < kBlock; ++i) {
    out[i] = sample_at(in + i * kBytesPerSample);
  }
}

// A whole sample frame is loaded as one number, whose halves are the channels.
void convert_stereo_block(const uint8_t* __restrict in, float* __restrict left,
                          float* __restrict right) {
  for (uint64_t i = 0; i < kBlock; ++i) {
    uint32_t pair;
    std::memcpy(&pair, in + i * sizeof(pair), sizeof(pair));
    pair = le32toh(pair);
    left[i] = static_cast<float>(static_cast<int16_t>(pair)) * kStep;
    right[i] = static_cast<float>(static_cast<int32_t>(pair) >> 16) * kStep;
  }
}

// The next free sample of a channel in the encoder's frame.
float* plane_end(const AdtsAacEncoder& encoder, int32_t channel) {
  return reinterpret_cast<float*>(encoder.frame->extended_data[channel]) +
         encoder.frame_fill;
}

// Converts as many of `count` sample frames as whole blocks hold, where the
// layout has blocks; returns how many.
uint64_t convert_blocks(const AdtsAacEncoder& encoder, const uint8_t* in,
                        uint64_t count) {
  const uint64_t whole = encoder.channels <= 2 ? count - count % kBlock : 0;
  for (uint64_t i = 0; i < whole; i += kBlock) {
    const uint8_t* block = in + i * encoder.bytes_per_frame;
    if (encoder.channels == 1) {
      convert_mono_block(block, plane_end(encoder, 0) + i);
    } else {
      convert_stereo_block(block, plane_end(encoder, 0) + i,
                           plane_end(encoder, 1) + i);
    }
  }
  return whole;
}

// Fills the encoder's frame from the cursor as far as either goes.
void deinterleave(AdtsAacEncoder* encoder, PcmCursor* pcm) {
  const auto room =
      static_cast<uint64_t>(encoder->frame_size - encoder->frame_fill);
  const uint64_t count = std::min(pcm->total - pcm->consumed, room);
  const uint64_t stride = encoder->bytes_per_frame;
  const uint8_t* first = pcm->bytes + pcm->consumed * stride;
  const uint64_t converted = convert_blocks(*encoder, first, count);
  for (int32_t channel = 0; channel < encoder->channels; ++channel) {
    const uint8_t* in =
        first + static_cast<uint64_t>(channel) * kBytesPerSample;
    float* out = plane_end(*encoder, channel);
    for (uint64_t i = converted; i < count; ++i) {
      out[i] = sample_at(in + i * stride);
    }
  }
  encoder->frame_fill += static_cast<int32_t>(count);
  pcm->consumed += count;
}

SendResult send_full_frame(AdtsAacEncoder* encoder, NativeError* error) {
  encoder->frame->nb_samples = encoder->frame_size;
  encoder->frame->pts = encoder->next_pts;
  encoder->next_pts += encoder->frame_size;
  encoder->frame_fill = 0;
  return encoder->SendAndDrain(encoder->frame.get(), error);
}

// Makes sure that samples can be put into the encoder's frame.
bool prepare_to_fill(AdtsAacEncoder* encoder, NativeError* error) {
  if (!encoder->codec && encoder->Open(error) != 0) {
    return false;
  }
  if (encoder->frame_fill > 0) {
    return true;
  }
  // The codec may still hold a reference on the frame sent last.
  const int writable = av_frame_make_writable(encoder->frame.get());
  if (writable < 0) {
    *error = ffmpeg_error(kErrEncodeFailed, "av_frame_make_writable",
                          encoder->path, writable);
    return false;
  }
  return true;
}

// Encodes up to the end or the first failure.
SendResult encode(AdtsAacEncoder* encoder, PcmCursor* pcm, NativeError* error) {
  while (!pcm->AtEnd()) {
    if (!prepare_to_fill(encoder, error)) {
      return kEncodeFailed;
    }
    deinterleave(encoder, pcm);
    if (encoder->frame_fill == encoder->frame_size) {
      const SendResult sent = send_full_frame(encoder, error);
      if (sent != kOk) {
        return sent;
      }
    }
  }
  return kOk;
}

// Restarts a codec that fails; what it held and the frame that failed are lost,
// the rest of the chunk is not. A failed write is answered at once, and leaves
// the codec open.
Reply encode_with_restarts(AdtsAacEncoder* encoder, PcmCursor pcm) {
  NativeError error;
  for (int restarts = 0;; ++restarts) {
    const SendResult result = encode(encoder, &pcm, &error);
    if (result == kOk) {
      return Reply();
    }
    if (result == kWriteFailed) {
      return error_reply(std::move(error));
    }
    if (restarts == kMaxCodecRestarts) {
      encoder->Release();
      return error_reply(std::move(error));
    }
    encoder->log(kLevelWarning, "AAC codec failed mid-capture (" +
                                    error.message + "); restarting it");
    encoder->Release();
  }
}

// Puts the carry in front of the chunk and the incomplete last sample frame
// into the carry; returns the whole ones. `joined` holds them where needed.
PcmCursor split_sample_frames(AdtsAacEncoder* encoder,
                              const std::vector<uint8_t>& chunk,
                              std::vector<uint8_t>* joined) {
  const std::vector<uint8_t>* pcm = &chunk;
  if (encoder->carry_bytes != 0) {
    joined->reserve(encoder->carry.size() + chunk.size());
    *joined = encoder->carry;
    joined->insert(joined->end(), chunk.begin(), chunk.end());
    pcm = joined;
  }
  encoder->carry_bytes = pcm->size() % encoder->bytes_per_frame;
  encoder->carry.assign(
      pcm->end() - static_cast<ptrdiff_t>(encoder->carry_bytes), pcm->end());
  return {pcm->data(), pcm->size() / encoder->bytes_per_frame, 0};
}

// Only the first of a row of such appends is logged.
Reply not_recording(PluginState* state, size_t size) {
  NativeError error =
      plain_error(kErrNotRecording, "append of " + std::to_string(size) +
                                        " bytes with no open recording");
  error.quiet = std::exchange(state->append_failure_reported, true);
  return error_reply(std::move(error));
}

Reply append_chunk(PluginState* state, const std::vector<uint8_t>& chunk) {
  CaptureSession& session = state->session;
  if (!session.IsOpen()) {
    return not_recording(state, chunk.size());
  }
  if (session.paused) {
    state->dropped_append_bytes += chunk.size();
    return Reply();
  }
  if (chunk.empty()) {
    return Reply();
  }
  std::vector<uint8_t> joined;
  AdtsAacEncoder* encoder = session.encoder.get();
  return encode_with_restarts(encoder,
                              split_sample_frames(encoder, chunk, &joined));
}

}  // namespace

#endif  // CORVANE_SRC_RECORDING_APPEND_H_
