// Rules that make the encoder behave as another one would, and a tap on the
// frames that it is sent. See support/faults.h.
#ifndef CORVANE_TESTS_SUPPORT_CODEC_FAULTS_H_
#define CORVANE_TESTS_SUPPORT_CODEC_FAULTS_H_

#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "support/faults.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace corvane_test {

// avcodec_find_encoder_by_name gives out a changed description of the encoder
// it found, which stands for the real one wherever it is passed on.
Rule EncoderDescribedAs(std::function<void(AVCodec&)> change);

// The encoder doesn't advertise that its last frame may be short.
Rule EncoderWithoutSmallLastFrame();

// The opened context has this frame size.
Rule FrameSizeOnceOpen(int samples);

// The opened context carries these bytes as its extradata. `size` may differ
// from what there is: libav's own field is signed.
Rule ExtradataOnceOpen(std::vector<uint8_t> bytes);
Rule ExtradataSizeOnceOpen(int size);

// Every packet received is filled up with zeros, or cut, to `size` bytes.
Rule PacketsResizedTo(int size);

struct SentFrame {
  int samples = 0;  // 0: the flush, which is no frame
  int64_t pts = 0;
  std::vector<std::vector<float>> planes;  // `samples` each
};

// Keeps a copy of what avcodec_send_frame is given, as long as it lives.
class SentFrames {
 public:
  SentFrames();
  std::vector<SentFrame> all() const;

 private:
  mutable std::mutex mutex_;
  std::vector<SentFrame> frames_;
  Fault tap_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_CODEC_FAULTS_H_
