// Sound files made for a test.
#ifndef CORVANE_TESTS_HOST_SOUND_FILE_H_
#define CORVANE_TESTS_HOST_SOUND_FILE_H_

#include <cstdint>
#include <string>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// Formats as libsndfile numbers them, such as SF_FORMAT_WAV | SF_FORMAT_FLOAT.
// Samples are interleaved.
void WriteFloats(const std::string& path, int format, int rate, int channels,
                 const std::vector<float>& samples);
void WriteInts(const std::string& path, int format, int rate, int channels,
               const std::vector<int32_t>& samples);
void WriteShorts(const std::string& path, int format, int rate, int channels,
                 const std::vector<int16_t>& samples);

// A 16-bit WAV file of raw PCM.
void WriteWav(const std::string& path, const Bytes& pcm, int rate = 48000,
              int channels = 1);

// Little-endian PCM as samples.
std::vector<int16_t> Samples(const Bytes& pcm);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SOUND_FILE_H_
