// Signed 16-bit little-endian interleaved PCM for tests, the same at each run.
// `frames` counts sample frames: one sample per channel.
#ifndef CORVANE_TESTS_SUPPORT_PCM_H_
#define CORVANE_TESTS_SUPPORT_PCM_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

Bytes Silence(size_t frames, int channels = 1);
// A tone of `hz` at half of full scale, a quarter turn further per channel.
Bytes Sine(size_t frames, int channels = 1, int rate = 48000, double hz = 440);
// White noise over the whole range, drawn from `seed`.
Bytes Noise(size_t frames, int channels = 1, uint32_t seed = 1);
// A square wave between -32768 and 32767, 16 sample frames a half.
Bytes FullScale(size_t frames, int channels = 1);
// The speech sample of alsa-utils: mono, 48000 Hz, about 1.4 s.
Bytes Speech();
// The PCM of a 16-bit WAV file.
Bytes WavData(const std::string& path);

// The PCM cut after every `size` bytes; the last piece may be shorter.
std::vector<Bytes> Chunks(const Bytes& pcm, size_t size);
// `size` bytes from `offset` on, or what there is of them.
Bytes Slice(const Bytes& bytes, size_t offset, size_t size = SIZE_MAX);
Bytes Concat(const Bytes& first, const Bytes& second);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_PCM_H_
