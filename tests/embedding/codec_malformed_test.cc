// What is no message is refused, with the reason, and without asking for
// memory on its word.
#include <gmock/gmock.h>

#include "allocations.h"
#include "codec_fixture.h"
#include "vectors.h"

namespace {

using CodecMalformedTest = CodecTest;

class CodecCutTest : public CodecTest,
                     public testing::WithParamInterface<Vector> {};

TEST_P(CodecCutTest, CutAnywhereIsOutOfData) {
  const Octets& whole = GetParam().octets;
  for (size_t length = 1; length < whole.size(); ++length) {
    const Octets cut(whole.begin(), whole.begin() + length);
    EXPECT_EQ(Refusal(cut), FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA)
        << "cut to " << length << " of " << whole.size() << " bytes";
  }
}

TEST_P(CodecCutTest, BytesLeftOverAreAdditionalData) {
  for (const uint8_t extra : {0, 7, 255}) {
    EXPECT_EQ(Refusal(GetParam().octets + Octets{extra}),
              FL_MESSAGE_CODEC_ERROR_ADDITIONAL_DATA);
  }
}

INSTANTIATE_TEST_SUITE_P(Of, CodecCutTest, testing::ValuesIn(vectors()),
                         [](const auto& vector) { return vector.param.name; });

bool is_known(int type) { return type <= 14 && type != 5; }

TEST_F(CodecMalformedTest, EveryOtherTypeByteIsUnsupported) {
  for (int type = 0; type <= 255; ++type) {
    if (is_known(type)) continue;
    const Octets message = Octets{static_cast<uint8_t>(type)} + repeat(16, 0);
    EXPECT_EQ(Refusal(message), FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE)
        << "type " << type;
  }
}

TEST_F(CodecMalformedTest, EveryKnownTypeByteIsSupported) {
  for (int type = 0; type <= 14; ++type) {
    if (!is_known(type)) continue;
    const Octets message = Octets{static_cast<uint8_t>(type)} + repeat(16, 0);
    EXPECT_NE(Refusal(message), FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE)
        << "type " << type;
  }
}

TEST_F(CodecMalformedTest, AnUnknownTypeInsideAContainerIsUnsupported) {
  const int kUnsupported = FL_MESSAGE_CODEC_ERROR_UNSUPPORTED_TYPE;
  EXPECT_EQ(Refusal({12, 2, 0, 99}), kUnsupported) << "element of a list";
  EXPECT_EQ(Refusal({13, 1, 99, 0}), kUnsupported) << "key of a map";
  EXPECT_EQ(Refusal({13, 1, 0, 99}), kUnsupported) << "value of a map";
}

TEST_F(CodecMalformedTest, OneElementTooFewIsOutOfData) {
  const int kOutOfData = FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA;
  EXPECT_EQ(Refusal({7, 3, 'a', 'b'}), kOutOfData) << "string";
  EXPECT_EQ(Refusal({8, 3, 1, 2}), kOutOfData) << "Uint8List";
  EXPECT_EQ(Refusal(Octets{9, 3, 0, 0} + repeat(8, 1)), kOutOfData)
      << "Int32List";
  EXPECT_EQ(Refusal(Octets{10, 2} + repeat(6, 0) + repeat(8, 1)), kOutOfData)
      << "Int64List";
  EXPECT_EQ(Refusal(Octets{11, 2} + repeat(6, 0) + repeat(8, 1)), kOutOfData)
      << "Float64List";
  EXPECT_EQ(Refusal(Octets{14, 3, 0, 0} + repeat(8, 1)), kOutOfData)
      << "Float32List";
  EXPECT_EQ(Refusal({12, 3, 0, 0}), kOutOfData) << "list";
  EXPECT_EQ(Refusal({13, 2, 0, 0, 0}), kOutOfData) << "map";
}

constexpr uint8_t kSizedTypes[] = {7, 8, 9, 10, 11, 12, 13, 14};

// 4 GiB are announced (32 with elements of 8 bytes), a few bytes come.
TEST_F(CodecMalformedTest, AHugeSizeIsOutOfDataAndCostsNoMemory) {
  for (const uint8_t type : kSizedTypes) {
    const Owned<GBytes> message =
        to_bytes(Octets{type, 255, 255, 255, 255, 255} + repeat(20, 0));
    g_autoptr(GError) error = nullptr;
    size_t allocated;
    {
      const AllocationWatch watch;
      EXPECT_EQ(fl_message_codec_decode_message(codec_, message.get(), &error),
                nullptr);
      allocated = watch.total();
    }
    EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA)
        << "type " << int{type};
    EXPECT_LT(allocated, 16384u) << "type " << int{type};
  }
}

// Sizes whose bytes do not fit 32 bits, or just wrap around there.
TEST_F(CodecMalformedTest, SizesThatWrapAroundAreOutOfData) {
  for (const uint8_t type : {9, 10, 11, 14}) {
    for (const uint8_t high : {0x20, 0x40, 0x80}) {
      EXPECT_EQ(Refusal(Octets{type, 255, 1, 0, 0, high} + repeat(18, 0)),
                FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA)
          << "type " << int{type} << ", size " << int{high} << "000001";
    }
  }
}

TEST_F(CodecMalformedTest, TheWatchSeesWhatADecoderAllocates) {
  const Owned<GBytes> message =
      to_bytes(Octets{8, 255, 0, 0, 1, 0} + repeat(0x10000, 1));
  const AllocationWatch watch;
  const Value value(
      fl_message_codec_decode_message(codec_, message.get(), nullptr));
  EXPECT_GE(watch.total(), 0x10000u);
}

TEST_F(CodecMalformedTest, ReadingPastTheEndOfTheBufferIsOutOfData) {
  const Owned<GBytes> message = to_bytes({0, 0});
  size_t offset = 5;
  g_autoptr(GError) error = nullptr;
  EXPECT_EQ(fl_standard_message_codec_read_value(standard_.get(), message.get(),
                                                 &offset, &error),
            nullptr);
  EXPECT_EQ(outcome_of(error).code, FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA);
}

}  // namespace
