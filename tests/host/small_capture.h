// Captures of frames that are all alike, for figures that are known beforehand.
#ifndef CORVANE_TESTS_HOST_SMALL_CAPTURE_H_
#define CORVANE_TESTS_HOST_SMALL_CAPTURE_H_

#include <cstdint>

#include "support/bytes.h"

namespace corvane_test {

// A frame of 100 bytes with two channels.
Bytes FrameAt(int32_t frequency_index);

// So many of them at 48000 Hz.
Bytes Capture(int frames);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SMALL_CAPTURE_H_
