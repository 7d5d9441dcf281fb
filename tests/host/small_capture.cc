#include "host/small_capture.h"

#include <gtest/gtest.h>

#include "adts/frame.h"
#include "support/pcm.h"

namespace corvane_test {

Bytes FrameAt(int32_t frequency_index) {
  const Bytes payload(100 - adts::kHeaderSize, 0x11);
  Bytes frame;
  EXPECT_TRUE(adts::Frame({2, frequency_index, 2}, payload.data(),
                          payload.size(), &frame));
  return frame;
}

Bytes Capture(int frames) {
  Bytes capture;
  for (; frames > 0; --frames) capture = Concat(capture, FrameAt(3));
  return capture;
}

}  // namespace corvane_test
