// `StreamConfigFromAudioSpecificConfig` against a reader that spells the bits
// out as text, on every front piece of the input.
#include <bitset>
#include <optional>

#include "adts/stream_config.h"
#include "fuzzing.h"

namespace corvane_fuzz {
namespace {

constexpr adts::StreamConfig kUntouched = {-1, -2, -3};

std::optional<adts::StreamConfig> Expected(const Bytes& config) {
  if (config.size() < 2) return std::nullopt;
  const std::string bits =
      std::bitset<16>(config[0] * 256U + config[1]).to_string();
  const int object_type = std::stoi(bits.substr(0, 5), nullptr, 2);
  const int frequency_index = std::stoi(bits.substr(5, 4), nullptr, 2);
  const int channels = std::stoi(bits.substr(9, 4), nullptr, 2);
  if (object_type == 0 || object_type > 4 || frequency_index > 12 ||
      channels == 0 || channels > 6) {
    return std::nullopt;
  }
  return adts::StreamConfig{object_type, frequency_index, channels};
}

void Check(const Bytes& config) {
  adts::StreamConfig actual = kUntouched;
  const bool accepted = adts::StreamConfigFromAudioSpecificConfig(
      config.data(), config.size(), &actual);
  const auto expected = Expected(config);
  Require(accepted == expected.has_value(), "wrongly accepted or refused");
  Require(actual == expected.value_or(kUntouched),
          accepted ? "read other than written" : "a refusal left its mark");
}

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  for (size_t length = 0; length <= std::min<size_t>(size, 4); ++length) {
    corvane_fuzz::Check(corvane_fuzz::Bytes(data, data + length));
  }
  corvane_fuzz::Check(corvane_fuzz::Bytes(data, data + size));
  return 0;
}
