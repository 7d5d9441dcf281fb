// Method calls put together byte by byte, so that any piece of one can be
// broken.
#ifndef CORVANE_FUZZ_PLUGIN_MESSAGES_H_
#define CORVANE_FUZZ_PLUGIN_MESSAGES_H_

#include <algorithm>
#include <array>
#include <string>

#include "support/bytes.h"

namespace corvane_fuzz {

using corvane_test::Bytes;

constexpr std::array<const char*, 6> kKeys = {"capturePath", "outputPath",
                                              "wavPath",     "sampleRate",
                                              "channels",    "bitRate"};

// Their values as they travel.
using Arguments = std::array<Bytes, kKeys.size()>;

inline void Append(Bytes* bytes, const Bytes& more) {
  bytes->insert(bytes->end(), more.begin(), more.end());
}

inline Bytes TextValue(const std::string& text) {
  const auto low = static_cast<uint8_t>(text.size());
  const auto high = static_cast<uint8_t>(text.size() >> 8);
  Bytes bytes = text.size() < 254 ? Bytes{7, low} : Bytes{7, 254, low, high};
  bytes.insert(bytes.end(), text.begin(), text.end());
  return bytes;
}

inline Bytes IntValue(uint32_t number) {
  Bytes bytes = {3};
  for (int shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<uint8_t>(number >> shift));
  }
  return bytes;
}

// A method with its arguments; those of no bytes at all are left out.
inline Bytes MethodCall(const std::string& method,
                        const Arguments& arguments = {}) {
  Bytes message = TextValue(method);
  const auto count = std::count_if(arguments.begin(), arguments.end(),
                                   [](const Bytes& it) { return !it.empty(); });
  Append(&message, {13, static_cast<uint8_t>(count)});
  for (size_t i = 0; i < kKeys.size(); ++i) {
    if (arguments[i].empty()) continue;
    Append(&message, TextValue(kKeys[i]));
    Append(&message, arguments[i]);
  }
  return message;
}

}  // namespace corvane_fuzz

#endif  // CORVANE_FUZZ_PLUGIN_MESSAGES_H_
