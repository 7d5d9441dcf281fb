#include "support/pcm.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <stdexcept>

#include "support/files.h"

namespace corvane_test {
namespace {

constexpr double kPi = 3.14159265358979323846;

// Builds PCM from `sample(frame, channel)`.
template <typename Sample>
Bytes Build(size_t frames, int channels, Sample sample) {
  Bytes pcm;
  pcm.reserve(frames * channels * 2);
  for (size_t i = 0; i < frames; ++i) {
    for (int c = 0; c < channels; ++c) {
      const auto bits = static_cast<uint16_t>(sample(i, c));
      pcm.push_back(bits & 0xFF);
      pcm.push_back(bits >> 8);
    }
  }
  return pcm;
}

uint32_t LittleEndian32(const Bytes& bytes, size_t at) {
  return bytes.at(at) | bytes.at(at + 1) << 8 | bytes.at(at + 2) << 16 |
         static_cast<uint32_t>(bytes.at(at + 3)) << 24;
}

}  // namespace

Bytes Silence(size_t frames, int channels) {
  return Bytes(frames * channels * 2, 0);
}

Bytes Sine(size_t frames, int channels, int rate, double hz) {
  return Build(frames, channels, [&](size_t i, int c) {
    const double turn = 2 * kPi * hz * static_cast<double>(i) / rate;
    return static_cast<int16_t>(
        std::lrint(16384 * std::sin(turn + c * kPi / 2)));
  });
}

Bytes Noise(size_t frames, int channels, uint32_t seed) {
  std::mt19937 random(seed);
  return Build(frames, channels, [&](size_t, int) {
    return static_cast<int16_t>(random() & 0xFFFF);
  });
}

Bytes FullScale(size_t frames, int channels) {
  return Build(frames, channels, [](size_t i, int) {
    return static_cast<int16_t>(i / 16 % 2 == 0 ? -32768 : 32767);
  });
}

Bytes Speech() { return WavData("/usr/share/sounds/alsa/Front_Center.wav"); }

Bytes WavData(const std::string& path) {
  const Bytes wav = ReadFile(path);
  // Chunks follow the 12 bytes of the RIFF header, each on an even offset.
  for (size_t at = 12; at + 8 <= wav.size();) {
    const size_t size = LittleEndian32(wav, at + 4);
    if (std::memcmp(&wav[at], "data", 4) == 0) return Slice(wav, at + 8, size);
    at += 8 + size + size % 2;
  }
  throw std::runtime_error("no data chunk in " + path);
}

std::vector<Bytes> Chunks(const Bytes& pcm, size_t size) {
  std::vector<Bytes> chunks;
  for (size_t at = 0; at < pcm.size(); at += size) {
    chunks.push_back(Slice(pcm, at, size));
  }
  return chunks;
}

Bytes Slice(const Bytes& bytes, size_t offset, size_t size) {
  const size_t from = std::min(offset, bytes.size());
  const size_t count = std::min(size, bytes.size() - from);
  return Bytes(bytes.begin() + from, bytes.begin() + from + count);
}

Bytes Concat(const Bytes& first, const Bytes& second) {
  Bytes both = first;
  both.insert(both.end(), second.begin(), second.end());
  return both;
}

}  // namespace corvane_test
