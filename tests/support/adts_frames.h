// A capture read frame by frame, straight from the header's definition and
// without any of the product's code.
#ifndef CORVANE_TESTS_SUPPORT_ADTS_FRAMES_H_
#define CORVANE_TESTS_SUPPORT_ADTS_FRAMES_H_

#include <cstddef>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// What the fixed part of an ADTS header names.
int FrequencyIndexOf(const Bytes& frame);
int ChannelConfigOf(const Bytes& frame);

// The whole frames of a capture, headers included. A byte that belongs to none
// fails the test.
std::vector<Bytes> SplitFrames(const Bytes& capture);
// The offset at which frame `n` starts.
size_t FrameOffset(const std::vector<Bytes>& frames, size_t n);
// The duration that `frames` AAC frames of 1024 samples have, in whole
// milliseconds, rounded down.
int64_t FramesToMs(size_t frames, int rate);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_ADTS_FRAMES_H_
