// Reading of ADTS headers (ISO/IEC 14496-3, 1.A.2) out of memory: one, and the
// search for one among foreign bytes. Pure; any thread.
#ifndef CORVANE_SRC_ADTS_HEADER_H_
#define CORVANE_SRC_ADTS_HEADER_H_

#include <endian.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "adts/stream_config.h"

namespace adts {
namespace {

// How many bytes say all about a frame, with or without a CRC behind them.
constexpr size_t kParsedBytes = 7;

struct Header {
  int32_t frame_length;  // bytes, header included
  int32_t samples;       // per channel
  int32_t sample_rate;   // Hz
};

// Compilers make one load of it.
inline uint32_t BigEndian32(const uint8_t* bytes) {
  const uint32_t first = bytes[0];
  const uint32_t second = bytes[1];
  const uint32_t third = bytes[2];
  return first << 24 | second << 16 | third << 8 | bytes[3];
}

// Whether the seven bytes are a header that anyone could have written. `header`
// is filled only then.
inline bool ParseHeader(const uint8_t* bytes, Header* header) {
  const uint32_t front = BigEndian32(bytes);
  const uint32_t back = BigEndian32(bytes + 3);
  const uint32_t frequency_index = front >> 10 & 0x0F;
  const uint32_t frame_length = back >> 13 & 0x1FFF;
  const uint32_t protection_absent = front >> 16 & 0x01;  // no CRC of two bytes
  // Layer must be 0; ID and protection_absent are free. One branch for all
  // rules: content that breaks now this one, now that one can't mislead the
  // processor's guesses.
  if (((front & 0xFFF60000) != 0xFFF00000) |
      (frequency_index >= kSamplingFrequencies.size()) |
      (frame_length + 2 * protection_absent <= 9)) {
    return false;
  }
  header->frame_length = static_cast<int32_t>(frame_length);
  header->samples = (static_cast<int32_t>(back & 0x03) + 1) * 1024;
  header->sample_rate = kSamplingFrequencies[frequency_index];
  return true;
}

// Whether the bytes at `index`, below `size`, may begin a header by the rules
// for the first three, as many as there are of them.
inline bool MayBeginHeader(const uint8_t* bytes, size_t index, size_t size) {
  return bytes[index] == 0xFF &&
         (index + 1 >= size || (bytes[index + 1] & 0xF6) == 0xF0) &&
         (index + 2 >= size || (bytes[index + 2] & 0x3C) < 13 << 2);
}

// How many places the search rules out at a time; it reads one byte more.
constexpr size_t kStride = 64;

// Whether a syncword with layer 0 begins at any of them. Compilers vectorise
// the loop for its fixed number.
inline bool HasSyncword(const uint8_t* bytes) {
  uint8_t found = 0;
  for (size_t i = 0; i < kStride; ++i) {
    found |= static_cast<uint8_t>((bytes[i] == 0xFF) &
                                  ((bytes[i + 1] & 0xF6) == 0xF0));
  }
  return found != 0;
}

// The lowest byte of the result is the first in memory.
inline uint64_t EightBytes(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof(word));
  return le64toh(word);
}

// MayBeginHeader() at eight places at once, in an ordinary register: the
// highest bit of byte i answers for bytes + i. Reads ten bytes. No sum carries
// from one byte into the next.
inline uint64_t PossibleHeaders(const uint8_t* bytes) {
  constexpr uint64_t kEach = 0x0101010101010101;
  // Zero in each byte where syncword and layer are right.
  const uint64_t wrong =
      ~EightBytes(bytes) |
      ((EightBytes(bytes + 1) ^ kEach * 0xF0) & kEach * 0xF6);
  const uint64_t not_zero = ((wrong & kEach * 0x7F) + kEach * 0x7F) | wrong;
  // Reaches the highest bit from frequency index 13 on.
  const uint64_t frequency_index =
      (EightBytes(bytes + 2) & kEach * 0x3C) + kEach * (0x80 - (13 << 2));
  return ~(not_zero | frequency_index) & kEach * 0x80;
}

// Whether the seven bytes at `index` and those behind the frame may both be
// headers.
inline bool MayBeFollowed(const uint8_t* bytes, size_t index, size_t size) {
  Header header;
  const size_t next = index + (BigEndian32(bytes + index + 3) >> 13 & 0x1FFF);
  const bool followed =
      next + kParsedBytes > size || ParseHeader(bytes + next, &header);
  return followed && ParseHeader(bytes + index, &header);
}

// Of the `size` bytes in memory, the first index from `from` on where a frame
// may begin that another follows: neither header can be told to be none. What
// lies behind the bytes may be anything. `size` when there is no such index.
inline size_t FindFrame(const uint8_t* bytes, size_t from, size_t size) {
  size_t index = from;
  while (index + kStride + kParsedBytes <= size) {
    if (!HasSyncword(bytes + index)) {
      index += kStride;
      continue;
    }
    for (const size_t end = index + kStride; index < end; index += 8) {
      uint64_t places = PossibleHeaders(bytes + index);
      for (; places != 0; places &= places - 1) {
        const auto place = static_cast<size_t>(__builtin_ctzll(places)) / 8;
        if (MayBeFollowed(bytes, index + place, size)) {
          return index + place;
        }
      }
    }
  }
  while (index < size && !(MayBeginHeader(bytes, index, size) &&
                           (index + kParsedBytes > size ||
                            MayBeFollowed(bytes, index, size)))) {
    ++index;
  }
  return index;
}

}  // namespace
}  // namespace adts

#endif  // CORVANE_SRC_ADTS_HEADER_H_
