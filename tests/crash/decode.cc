// FFmpeg's decoder on a recovered file, inside the test's own process: a
// command line for each kill would cost more than the kill.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "crash/kill_fixture.h"
#include "support/adts_frames.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
}

namespace corvane_test {
namespace {

// Complaints since the first decoder; the library's log has no owner.
std::atomic<int>& Complaints() {
  static std::atomic<int> count = 0;
  return count;
}

void CountComplaint(void*, int level, const char*, va_list) {
  if (level <= AV_LOG_ERROR) ++Complaints();
}

struct Free {
  void operator()(AVCodecContext* it) const { avcodec_free_context(&it); }
  void operator()(AVFrame* it) const { av_frame_free(&it); }
  void operator()(AVPacket* it) const { av_packet_free(&it); }
};

class Decoder {
 public:
  Decoder()
      : context_(
            avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_AAC))) {
    context_->err_recognition = AV_EF_CAREFUL | AV_EF_EXPLODE;
    EXPECT_EQ(avcodec_open2(context_.get(), nullptr, nullptr), 0);
  }

  // The sample frames that come out; below 0 where it refuses.
  int Decode(const Bytes& frame) {
    if (av_new_packet(packet_.get(), static_cast<int>(frame.size())) != 0) {
      return -1;
    }
    std::copy(frame.begin(), frame.end(), packet_->data);
    const int sent = avcodec_send_packet(context_.get(), packet_.get());
    av_packet_unref(packet_.get());
    if (sent < 0) return sent;
    const int received = avcodec_receive_frame(context_.get(), frame_.get());
    return received < 0 ? received : frame_->nb_samples;
  }

 private:
  const std::unique_ptr<AVCodecContext, Free> context_;
  const std::unique_ptr<AVPacket, Free> packet_{av_packet_alloc()};
  const std::unique_ptr<AVFrame, Free> frame_{av_frame_alloc()};
};

}  // namespace

void ExpectDecodes(const Bytes& file) {
  const int before = Complaints();
  av_log_set_callback(CountComplaint);
  {
    Decoder decoder;
    for (const Bytes& frame : SplitFrames(file)) {
      EXPECT_EQ(decoder.Decode(frame), 1024);
    }
  }
  av_log_set_callback(av_log_default_callback);
  EXPECT_EQ(Complaints(), before) << "the decoder complains";
}

}  // namespace corvane_test
