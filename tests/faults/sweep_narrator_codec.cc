// PCM into frames, and frames into the file.
#include <algorithm>

#include "faults/sweep_narrator.h"
#include "faults/sweep_promises.h"

namespace corvane_test {
namespace {

constexpr size_t kSampleBytes = 2;
constexpr int kRestarts = 2;

}  // namespace

Reply Narrator::Append(size_t bytes) {
  if (!session_.open) {
    quiet_ = std::exchange(append_failure_reported_, true);
    return PlainError("NOT_RECORDING", "append of " + std::to_string(bytes) +
                                           " bytes with no open recording");
  }
  if (session_.paused) {
    dropped_ += bytes;
    return NullReply();
  }
  const size_t whole = session_.carry + bytes;
  session_.carry = whole % kSampleBytes;
  int samples = static_cast<int>(whole / kSampleBytes);
  for (int restarts = 0;; ++restarts) {
    const MaybeError error = Encode(&samples);
    if (!error) return NullReply();
    if (error->code == "WRITE_FAILED") return *error;
    session_.codec = false;
    session_.fill = 0;
    if (restarts == kRestarts) return *error;
    Log(Restarting(*error));
  }
}

// Up to the end of the chunk, or the first failure.
Narrator::MaybeError Narrator::Encode(int* samples) {
  MaybeError error;
  while (*samples > 0 && !error) {
    if (!session_.codec && (error = OpenCodec())) break;
    if (session_.fill == 0) {
      const SweptCall ready = Next("av_frame_make_writable");
      if (HasFailed(ready)) return ToldOfCodec(ready);
    }
    const int taken = std::min(*samples, kFrameSamples - session_.fill);
    *samples -= taken;
    session_.fill = (session_.fill + taken) % kFrameSamples;
    if (session_.fill == 0) error = SendAndDrain();
  }
  return error;
}

Narrator::MaybeError Narrator::OpenCodec() {
  MaybeError error = AllocateCodec();
  if (error) return error;
  for (const char* name :
       {"avcodec_open2", "av_channel_layout_copy", "av_frame_get_buffer"}) {
    const SweptCall call = Next(name);
    if (HasFailed(call)) return ToldOfCodec(call);
  }
  session_.codec = true;
  session_.fill = 0;
  session_.sent = false;
  Log(EncoderLine(kSweepRate, 1));
  return std::nullopt;
}

// All three are asked for, and one answer tells of all that didn't come.
Narrator::MaybeError Narrator::AllocateCodec() {
  if (HasFailed(Next("avcodec_find_encoder_by_name"))) {
    --untold_;
    return FileError("ENCODE_FAILED", "libavcodec has no AAC encoder",
                     subject_);
  }
  MaybeError error;
  for (const char* name :
       {"avcodec_alloc_context3", "av_frame_alloc", "av_packet_alloc"}) {
    if (HasFailed(Next(name))) {
      --untold_;
      error = LibavError("codec allocation", subject_, AVERROR(ENOMEM));
    }
  }
  return error;
}

// Of a frame, or of the end of the stream.
Narrator::MaybeError Narrator::SendAndDrain() {
  session_.sent = true;
  const SweptCall send = Next("avcodec_send_frame");
  if (HasFailed(send)) return ToldOfCodec(send);
  for (;;) {
    const SweptCall receive = Next("avcodec_receive_packet");
    if (receive.result == AVERROR(EAGAIN) || receive.result == AVERROR_EOF) {
      --untold_;  // there is no more for now
      return std::nullopt;
    }
    if (HasFailed(receive)) return ToldOfCodec(receive);
    MaybeError error = WriteFrame();
    if (error) return error;
  }
}

Narrator::MaybeError Narrator::WriteFrame() {
  Bytes frame;
  for (;;) {
    const SweptCall write = Next("write");
    const size_t missing = static_cast<size_t>(write.wanted);
    if (!HasFailed(write)) {
      frame.insert(frame.end(), write.written.begin(), write.written.end());
      files_->Append(session_.path, write.written);
      if (write.written.size() < missing) continue;
      if (SplitFrames(frame).size() != 1) {
        throw WentAstray("what was written is no frame");
      }
      files_->FrameIsWhole(session_.path);
      break;
    }
    if (write.error == EINTR) {
      Keep(SilentFailure::kMadeAgain);
      continue;
    }
    if (!frame.empty()) files_->FrameIsHalf(session_.path);
    if (write.error != 0) return Told("frame", write);
    Keep(SilentFailure::kWriteWithoutErrno);
    break;
  }
  ++session_.frames;
  return std::nullopt;
}

Narrator::MaybeError Narrator::Finish() {
  MaybeError error;
  const bool anything = session_.fill > 0 || session_.sent;
  if (session_.codec && anything) {
    if (session_.fill > 0) error = SendAndDrain();
    if (!error) error = SendAndDrain();
  }
  session_.codec = false;
  session_.fill = 0;
  session_.sent = false;
  return error;
}

}  // namespace corvane_test
