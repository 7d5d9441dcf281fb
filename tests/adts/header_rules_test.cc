// Which seven bytes are a header: every value of every field.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "adts/scan.h"
#include "pieces.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

using adts::Scan;

using Change = std::function<void(HeaderFields*)>;

Bytes ChangedFrame(const Change& change) {
  HeaderFields fields;
  fields.frame_length = 16;
  change(&fields);
  return FrameBytes(fields);
}

// One frame of 16 bytes, accepted at the start of the file.
bool IsAccepted(const Change& change) {
  return ScanBytes(ChangedFrame(change)).valid_end == 16;
}

// The changed frame is foreign to the scan and stands between sound ones.
void ExpectResynchronised(const Change& change) {
  const Bytes file =
      FrameOfLength(20) + ChangedFrame(change) + FrameOfLength(30);
  EXPECT_EQ(ScanBytes(file), (Scan{66, 66, 2048, 44100, 16}));
}

TEST(Header, WithAnotherSyncwordIsInvalid) {
  for (unsigned syncword = 0; syncword < 0x1000; ++syncword) {
    ASSERT_EQ(IsAccepted([=](HeaderFields* h) { h->syncword = syncword; }),
              syncword == 0xFFF)
        << syncword;
  }
}

TEST(Header, WithAnotherLayerThanZeroIsForeign) {
  for (unsigned layer = 1; layer < 4; ++layer) {
    const Change change = [=](HeaderFields* h) { h->layer = layer; };
    EXPECT_FALSE(IsAccepted(change)) << layer;
    ExpectResynchronised(change);
  }
}

TEST(Header, OfMpeg2AndWithCrcIsValid) {
  for (unsigned id = 0; id < 2; ++id) {
    for (unsigned absent = 0; absent < 2; ++absent) {
      EXPECT_TRUE(IsAccepted([=](HeaderFields* h) {
        h->id = id;
        h->protection_absent = absent;
      })) << id
          << absent;
    }
  }
}

TEST(Header, TellsTheSampleRateOfItsFrequencyIndex) {
  const std::vector<int> rates = {96000, 88200, 64000, 48000, 44100,
                                  32000, 24000, 22050, 16000, 12000,
                                  11025, 8000,  7350};
  for (unsigned index = 0; index < 13; ++index) {
    const Scan scan = ScanBytes(
        ChangedFrame([=](HeaderFields* h) { h->frequency_index = index; }));
    EXPECT_EQ(scan, (Scan{16, 16, 1024, rates[index], 0}));
  }
}

TEST(Header, WithAReservedFrequencyIndexIsForeign) {
  for (unsigned index = 13; index < 16; ++index) {
    const Change change = [=](HeaderFields* h) { h->frequency_index = index; };
    EXPECT_FALSE(IsAccepted(change)) << index;
    ExpectResynchronised(change);
  }
}

TEST(Header, MustBeShorterThanItsFrame) {
  for (const unsigned absent : {0U, 1U}) {
    const unsigned header_length = absent == 1 ? 7 : 9;
    for (unsigned length = 0; length <= 8191; ++length) {
      HeaderFields fields;
      fields.protection_absent = absent;
      fields.frame_length = length;
      // A file of exactly one frame, or of the seven bytes that there are.
      Bytes file = HeaderBytes(fields);
      file.resize(std::max(length, 7U));
      ASSERT_EQ(ScanBytes(file).samples, length > header_length ? 1024 : 0)
          << "protection_absent " << absent << " length " << length;
    }
  }
}

TEST(Header, WithCrcIsInvalidAtLength9AndValidAt10) {
  HeaderFields fields;
  fields.protection_absent = 0;
  fields.frame_length = 9;
  EXPECT_EQ(ScanBytes(FrameBytes(fields)), (Scan{0, 9, 0, 0, 0}));
  fields.frame_length = 10;
  EXPECT_EQ(ScanBytes(FrameBytes(fields)), (Scan{10, 10, 1024, 44100, 0}));
}

TEST(Header, Counts1024SamplesForEveryRawDataBlock) {
  for (unsigned blocks = 0; blocks < 4; ++blocks) {
    const Scan scan = ScanBytes(
        ChangedFrame([=](HeaderFields* h) { h->raw_data_blocks = blocks; }));
    EXPECT_EQ(scan, (Scan{16, 16, int64_t{blocks + 1} * 1024, 44100, 0}));
  }
}

TEST(Header, MayHoldAnythingInTheOtherFields) {
  for (unsigned value = 0; value < 0x800; ++value) {
    ASSERT_TRUE(IsAccepted([=](HeaderFields* h) {
      h->profile = value & 3;
      h->private_bit = value >> 2 & 1;
      h->channel_configuration = value >> 3 & 7;
      h->original_copy = value >> 6 & 1;
      h->home = value >> 7 & 1;
      h->copyright_bit = value >> 8 & 1;
      h->copyright_start = value >> 9 & 1;
      h->buffer_fullness = value;
    })) << value;
  }
}

TEST(Header, NeedNotResembleTheOneBefore) {
  Bytes file;
  for (unsigned i = 0; i < 26; ++i) {
    HeaderFields fields;
    fields.id = i % 2;
    fields.frequency_index = i % 13;
    fields.channel_configuration = i % 8;
    fields.raw_data_blocks = i % 4;
    fields.frame_length = 10 + i;
    file = file + FrameBytes(fields);
  }
  const auto size = static_cast<int64_t>(file.size());
  // 6 rounds of 1 + 2 + 3 + 4 blocks, then 1 + 2.
  EXPECT_EQ(ScanBytes(file), (Scan{size, size, int64_t{63} * 1024, 7350, 0}));
}

TEST(Header, OfAnySecondAndThirdByteScansLikeTheNaiveScanner) {
  for (unsigned word = 0; word < 0x10000; ++word) {
    Bytes file = FrameOfLength(12) + FrameOfLength(12);
    file[1] = static_cast<uint8_t>(word >> 8);
    file[2] = static_cast<uint8_t>(word & 0xFF);
    ExpectLikeNaive(file);
    if (HasFailure()) break;
  }
}

}  // namespace
}  // namespace corvane_test
