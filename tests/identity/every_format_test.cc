// Every rate, channel count and bit rate: the capture is, byte for byte, the
// file of the ffmpeg command line.
#include <string>
#include <vector>

#include "identity/take.h"
#include "support/pcm.h"

namespace {

using corvane_test::IdentityTest;
using corvane_test::Mixture;
using corvane_test::Noise;
using corvane_test::Take;

constexpr int64_t kBitRates[] = {32000, 64000, 128000, 320000};
// Three are left out: ffmpeg describes their speakers inside the file.
constexpr int kChannelCounts[] = {1, 2, 4, 5, 6};

std::string NameOf(int rate, int channels, int64_t bit_rate) {
  return std::to_string(rate) + " Hz, " + std::to_string(channels) +
         " channels, " + std::to_string(bit_rate) + " bit/s";
}

class EveryFormat : public IdentityTest,
                    public testing::WithParamInterface<int> {};

TEST_P(EveryFormat, IsWhatFfmpegWrites) {
  std::vector<Take> takes;
  for (const int channels : kChannelCounts) {
    for (const int64_t bit_rate : kBitRates) {
      takes.push_back({NameOf(GetParam(), channels, bit_rate),
                       Mixture(1500, channels), GetParam(), channels,
                       bit_rate});
    }
  }
  ExpectWhatFfmpegWrites(takes);
}

INSTANTIATE_TEST_SUITE_P(Rates, EveryFormat,
                         testing::Values(96000, 88200, 64000, 48000, 44100,
                                         32000, 24000, 22050, 16000, 12000,
                                         11025, 8000, 7350),
                         testing::PrintToStringParamName());

using OddBitRates = IdentityTest;

TEST_F(OddBitRates, AreTakenOrRefusedAsByFfmpeg) {
  std::vector<Take> takes;
  for (const int64_t bit_rate : {int64_t{1}, int64_t{10}, int64_t{1000},
                                 int64_t{2147483648}, int64_t{9000000000000}}) {
    takes.push_back(
        {NameOf(16000, 1, bit_rate), Noise(3000, 1), 16000, 1, bit_rate});
  }
  ExpectWhatFfmpegWrites(takes);
}

}  // namespace
