// WAV files whose writer died, for tests of "finalizeWavOnly", and the header
// that they should get, written from the format's definition alone.
#ifndef CORVANE_TESTS_CHANNEL_WAV_FIXTURE_H_
#define CORVANE_TESTS_CHANNEL_WAV_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {

constexpr uint64_t kWavHeaderSize = 44;

// What a header says, in the words of the file format and with plain numbers.
struct WavFields {
  uint32_t riff_size;
  uint16_t channels;
  uint32_t rate;
  uint32_t byte_rate;
  uint16_t block_align;
  uint32_t data_size;
};

inline void PutText(Bytes* file, size_t offset, const std::string& text) {
  std::copy(text.begin(), text.end(), file->begin() + offset);
}

inline void PutNumber(Bytes* file, size_t offset, size_t width,
                      uint32_t number) {
  for (size_t i = 0; i < width; ++i, number /= 256) {
    file->at(offset + i) = static_cast<uint8_t>(number % 256);
  }
}

inline Bytes WavHeaderOf(const WavFields& header) {
  Bytes bytes(kWavHeaderSize, 0xEE);
  PutText(&bytes, 0, "RIFF");
  PutNumber(&bytes, 4, 4, header.riff_size);
  PutText(&bytes, 8, "WAVE");
  PutText(&bytes, 12, "fmt ");
  PutNumber(&bytes, 16, 4, 16);
  PutNumber(&bytes, 20, 2, 1);
  PutNumber(&bytes, 22, 2, header.channels);
  PutNumber(&bytes, 24, 4, header.rate);
  PutNumber(&bytes, 28, 4, header.byte_rate);
  PutNumber(&bytes, 32, 2, header.block_align);
  PutNumber(&bytes, 34, 2, 16);
  PutText(&bytes, 36, "data");
  PutNumber(&bytes, 40, 4, header.data_size);
  return bytes;
}

inline Value WavArgs(const std::string& path, int64_t rate, int64_t channels) {
  return Value::Map(
      {{"wavPath", path}, {"sampleRate", rate}, {"channels", channels}});
}

inline std::string PatchedLine(const std::string& path, uint64_t data_bytes) {
  return Info("finalizeWavOnly patched " + path +
              " dataBytes=" + std::to_string(data_bytes));
}

// A file that a crashed writer left: 44 bytes of a header to come, and then
// bytes that are all different from their neighbours.
inline Bytes Unfinished(size_t data_bytes) {
  Bytes file(kWavHeaderSize + data_bytes, 0xAA);
  for (size_t i = 0; i < data_bytes; ++i) {
    file[kWavHeaderSize + i] = static_cast<uint8_t>(i * 7 % 251);
  }
  return file;
}

class FinalizeWavOnlyTest : public ChannelTest {
 protected:
  Reply Repair(const std::string& path, int64_t rate = 48000,
               int64_t channels = 2) {
    return Call("finalizeWavOnly", WavArgs(path, rate, channels));
  }

  void ExpectRepaired(uint64_t data_bytes, int64_t rate = 48000,
                      int64_t channels = 2) {
    TakeTranscript();
    Repair(path_, rate, channels);
    EXPECT_THAT(TakeTranscript(),
                testing::ElementsAre(PatchedLine(path_, data_bytes),
                                     Answer("finalizeWavOnly", NullReply())));
  }

  void ExpectNotRepaired(const std::string& path, const Reply& error) {
    TakeTranscript();
    Repair(path);
    EXPECT_THAT(TakeTranscript(),
                testing::ElementsAre(Failed("finalizeWavOnly", error),
                                     Answer("finalizeWavOnly", error)));
  }

  // Reads no more than it needs: the file may be huge.
  Bytes Part(uint64_t offset, size_t size) const {
    std::ifstream file(path_, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    Bytes bytes(size);
    file.read(reinterpret_cast<char*>(bytes.data()),
              static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(file.gcount()));
    return bytes;
  }

  Bytes HeaderNow() const { return Part(0, kWavHeaderSize); }

  const std::string path_ = Path("take.wav");
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CHANNEL_WAV_FIXTURE_H_
