// The search for a frame among foreign bytes: many places at a time, it finds
// what a look at one place after the other finds, and what it reads is bound
// for every content.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "adts/header.h"
#include "adts/scan.h"
#include "pieces.h"
#include "recorded_reads.h"
#include "support/memory_file.h"
#include "support/naive_scan.h"

namespace corvane_test {
namespace {

// Bytes that are not there may be any: they count as right.
bool MayBeHeader(const Bytes& bytes, size_t at) {
  const auto has = [&](size_t i) { return at + i < bytes.size(); };
  if (bytes[at] != 0xFF) return false;
  if (has(1) && bytes[at + 1] >> 4 != 0xF) return false;
  if (has(1) && (bytes[at + 1] >> 1 & 3) != 0) return false;
  if (has(2) && (bytes[at + 2] >> 2 & 15) > 12) return false;
  if (!has(6)) return true;
  const int length =
      (bytes[at + 3] & 3) * 2048 + bytes[at + 4] * 8 + bytes[at + 5] / 32;
  return length > (bytes[at + 1] % 2 == 1 ? 7 : 9);
}

bool MayBeFrame(const Bytes& bytes, size_t at) {
  if (!MayBeHeader(bytes, at)) return false;
  if (at + 7 > bytes.size()) return true;
  const size_t next =
      at + (bytes[at + 3] & 3) * 2048 + bytes[at + 4] * 8 + bytes[at + 5] / 32;
  return next + 7 > bytes.size() || MayBeHeader(bytes, next);
}

size_t PlainSearch(const Bytes& bytes, size_t from) {
  while (from < bytes.size() && !MayBeFrame(bytes, from)) ++from;
  return from;
}

void ExpectLikePlainSearch(const Bytes& bytes) {
  for (size_t from = 0; from <= bytes.size(); ++from) {
    ASSERT_EQ(adts::FindFrame(bytes.data(), from, bytes.size()),
              PlainSearch(bytes, from))
        << "from " << from << " in " << testing::PrintToString(bytes);
  }
}

TEST(HeaderSearch, FindsWhatAPlainSearchFindsInBytesThatHeadersAreMadeOf) {
  constexpr uint8_t kLetters[] = {0xFF, 0xFF, 0xFF, 0xF1, 0xF0, 0xF9, 0xF8,
                                  0xF3, 0xFE, 0x50, 0x30, 0x34, 0x3C, 0x00,
                                  0x01, 0x02, 0x1F, 0x5F, 0x80, 0xEF};
  std::mt19937 random(7);
  for (int i = 0; i < 4000 && !testing::Test::HasFailure(); ++i) {
    Bytes bytes(random() % 200);
    for (uint8_t& byte : bytes) byte = kLetters[random() % sizeof(kLetters)];
    ExpectLikePlainSearch(bytes);
  }
}

TEST(HeaderSearch, TellsEveryByteOfAHeaderAtEveryPlace) {
  for (size_t place = 0; place < 80; ++place) {
    for (size_t changed = 0; changed < 7; ++changed) {
      for (int value = 0; value < 256; ++value) {
        Bytes bytes =
            Bytes(place, 0x55) + FrameOfLength(12) + FrameOfLength(80);
        bytes[place + changed] = static_cast<uint8_t>(value);
        ASSERT_EQ(adts::FindFrame(bytes.data(), 0, bytes.size()),
                  PlainSearch(bytes, 0))
            << "byte " << changed << " is " << value << " at " << place;
      }
    }
  }
}

// The bytes read by a scan, which must find what the naive one finds.
int64_t BytesReadFor(const Bytes& file) {
  const MemoryFile source(file);
  const RecordedReads recorder;
  adts::Scan scan = {};
  EXPECT_EQ(adts::ScanFile(source.fd(), &scan), 0);
  EXPECT_EQ(scan, NaiveScan(file));
  int64_t bytes = 0;
  for (const Read& read : recorder.reads()) bytes += read.result;
  return bytes;
}

constexpr size_t kLong = 1 << 20;

Bytes Repeated(const Bytes& pattern) {
  Bytes file = FrameOfLength(100);
  while (file.size() < kLong) {
    file.insert(file.end(), pattern.begin(), pattern.end());
  }
  return file;
}

TEST(HeaderSearch, ReadsForeignBytesThatHoldNoSyncwordOnce) {
  for (const char* pattern : {"00", "55", "F1", "FF 00", "FF 55 F1"}) {
    const Bytes file = Repeated(Hex(pattern));
    EXPECT_LE(BytesReadFor(file), static_cast<int64_t>(file.size()) + 64)
        << pattern;
  }
}

// Headers one after the other that each promise the next one far off, where
// none is: the look-ahead leaves the window, and the search comes back.
TEST(HeaderSearch, ReadsTheWorstContentAFixedNumberOfTimes) {
  for (const char* pattern :
       {"FF", "FF F1", "FF F1 50", "FF F1 50 FF F1 7C", "FF F0 00 FF FF FF 00",
        "FF F1 50 80 FF 1F FC", "FF F1 50 83 FF FF FC", "FF F1 00 03 FF E0"}) {
    const Bytes file = Repeated(Hex(pattern));
    EXPECT_LE(BytesReadFor(file), 4 * static_cast<int64_t>(file.size()))
        << pattern;
  }
}

// Each looks ahead to the end of the file, three bytes short of a header.
TEST(HeaderSearch, LooksForTheEndOfTheFileOnlyOnce) {
  Bytes file = FrameOfLength(100);
  constexpr size_t kSize = 8000;
  while (file.size() + 7 < kSize) {
    HeaderFields fields;
    fields.frame_length = static_cast<unsigned>(kSize - 3 - file.size());
    if (fields.frame_length < 8) break;
    const Bytes header = HeaderBytes(fields);
    file.insert(file.end(), header.begin(), header.end());
  }
  // The first of them is no foreign byte.
  file[100] = 0x55;
  file.resize(kSize, 0x55);
  EXPECT_LE(BytesReadFor(file), 4 * static_cast<int64_t>(kSize));
}

}  // namespace
}  // namespace corvane_test
