#include "pieces.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

unsigned Below(std::mt19937* random, unsigned limit) {
  return (*random)() % limit;
}

Bytes RandomPayload(std::mt19937* random, size_t size) {
  static const Bytes kSyncwords = Hex("FF F1");
  static const Bytes kDisguise = FrameOfLength(9);
  const unsigned kind = Below(random, 3);
  Bytes payload(size);
  for (size_t i = 0; i < size; ++i) {
    payload[i] = kind == 0   ? static_cast<uint8_t>(Below(random, 256))
                 : kind == 1 ? kSyncwords[i % kSyncwords.size()]
                             : kDisguise[i % kDisguise.size()];
  }
  return payload;
}

std::string HexOf(const Bytes& bytes, size_t most) {
  static const char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (size_t i = 0; i < std::min(bytes.size(), most); ++i) {
    text += {kDigits[bytes[i] >> 4], kDigits[bytes[i] & 15], ' '};
  }
  return bytes.size() > most ? text + "..." : text;
}

}  // namespace

Bytes FrameBytes(const HeaderFields& fields, uint8_t fill) {
  Bytes frame = HeaderBytes(fields);
  frame.resize(fields.frame_length, fill);
  return frame;
}

Bytes FrameOfLength(unsigned length, uint8_t fill) {
  HeaderFields fields;
  fields.frame_length = length;
  return FrameBytes(fields, fill);
}

Bytes Hex(const std::string& text) {
  Bytes bytes;
  std::string digits;
  for (const char c : text) {
    if (isspace(static_cast<unsigned char>(c)) == 0) digits += c;
    if (digits.size() < 2) continue;
    bytes.push_back(static_cast<uint8_t>(std::stoi(digits, nullptr, 16)));
    digits.clear();
  }
  return bytes;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

Bytes RandomCapture(std::mt19937* random, int frames,
                    unsigned longest_payload) {
  Bytes capture;
  for (int i = 0; i < frames; ++i) {
    const unsigned size = 3 + Below(random, longest_payload - 2);
    HeaderFields fields;
    fields.id = Below(random, 2);
    fields.protection_absent = Below(random, 4) != 0 ? 1 : 0;
    fields.frequency_index = Below(random, 13);
    fields.channel_configuration = Below(random, 8);
    fields.raw_data_blocks = Below(random, 4);
    fields.frame_length = 7 + size;
    capture =
        std::move(capture) + HeaderBytes(fields) + RandomPayload(random, size);
  }
  return capture;
}

adts::Scan ScanBytes(const Bytes& bytes) {
  static MemoryFile file;
  file.Set(bytes);
  adts::Scan scan{-1, -1, -1, -1, -1};
  EXPECT_EQ(adts::ScanFile(file.fd(), &scan), 0);
  return scan;
}

void ExpectLikeNaive(const Bytes& bytes) {
  const adts::Scan expected = NaiveScan(bytes);
  const adts::Scan actual = ScanBytes(bytes);
  if (actual == expected) return;
  ADD_FAILURE() << "scan of " << bytes.size() << " bytes\n  expected "
                << testing::PrintToString(expected) << "\n  actual   "
                << testing::PrintToString(actual) << "\n  "
                << HexOf(bytes, 200);
}

}  // namespace corvane_test
