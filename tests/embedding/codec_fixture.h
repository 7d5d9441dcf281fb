// Verbs for tests of the standard message codec.
#ifndef CORVANE_TESTS_EMBEDDING_CODEC_FIXTURE_H_
#define CORVANE_TESTS_EMBEDDING_CODEC_FIXTURE_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "handles.h"
#include "log_capture.h"

// How decoding or encoding ended: with no error, or with one and its text.
struct Outcome {
  static constexpr int kNoError = -1;
  static constexpr int kForeignDomain = -2;

  int code = kNoError;  // An FlMessageCodecError.
  std::string text;
};

// Takes an error of the message codec's domain, or none.
Outcome outcome_of(GError* error);

std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

struct Decoded {
  Value value;
  Outcome outcome;
};

struct Encoded {
  Octets octets;
  Outcome outcome;
};

class CodecTest : public testing::Test {
 protected:
  // Encodes a value that must have an encoding.
  Octets Encode(FlValue* value);
  Encoded TryEncode(FlValue* value);

  // Decodes a message that must be a value.
  Value Decode(const Octets& message);
  Decoded TryDecode(const Octets& message);

  // The error code of a message that must not decode.
  int Refusal(const Octets& message);

  LogCapture logs_;
  Owned<FlStandardMessageCodec> standard_{fl_standard_message_codec_new()};
  FlMessageCodec* const codec_ = FL_MESSAGE_CODEC(standard_.get());
};

// `count` times the same octet; concatenation, so that vectors read as bytes.
inline Octets repeat(size_t count, uint8_t octet) {
  return Octets(count, octet);
}

inline Octets operator+(Octets a, const Octets& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

#endif  // CORVANE_TESTS_EMBEDDING_CODEC_FIXTURE_H_
