#include "codec_fixture.h"

Outcome outcome_of(GError* error) {
  if (error == nullptr) return {};
  const bool own = error->domain == FL_MESSAGE_CODEC_ERROR;
  return {own ? error->code : Outcome::kForeignDomain, error->message};
}

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  return out << "error " << outcome.code << " (" << outcome.text << ")";
}

Encoded CodecTest::TryEncode(FlValue* value) {
  g_autoptr(GError) error = nullptr;
  Owned<GBytes> bytes(fl_message_codec_encode_message(codec_, value, &error));
  EXPECT_NE(bytes == nullptr, error == nullptr) << "either bytes or an error";
  return {bytes != nullptr ? to_octets(bytes.get()) : Octets(),
          outcome_of(error)};
}

Octets CodecTest::Encode(FlValue* value) {
  Encoded encoded = TryEncode(value);
  EXPECT_EQ(encoded.outcome.code, Outcome::kNoError) << encoded.outcome;
  return encoded.octets;
}

Decoded CodecTest::TryDecode(const Octets& message) {
  g_autoptr(GError) error = nullptr;
  Value value(
      fl_message_codec_decode_message(codec_, to_bytes(message).get(), &error));
  EXPECT_NE(value == nullptr, error == nullptr) << "either a value or an error";
  return {std::move(value), outcome_of(error)};
}

Value CodecTest::Decode(const Octets& message) {
  Decoded decoded = TryDecode(message);
  EXPECT_EQ(decoded.outcome.code, Outcome::kNoError) << decoded.outcome;
  return std::move(decoded.value);
}

int CodecTest::Refusal(const Octets& message) {
  return TryDecode(message).outcome.code;
}
