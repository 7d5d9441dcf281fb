// What ADTS files are put together from in these tests. Headers are written
// bit by bit from the format's own table, never with the code under test.
#ifndef CORVANE_TESTS_ADTS_PIECES_H_
#define CORVANE_TESTS_ADTS_PIECES_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "adts/scan.h"
#include "support/bytes.h"

namespace corvane_test {

// Every field of an ADTS header in the order of its bits. The defaults are
// what this project writes: AAC LC, 44100 Hz, stereo, no CRC, one block.
struct HeaderFields {
  unsigned syncword = 0xFFF;
  unsigned id = 0;
  unsigned layer = 0;
  unsigned protection_absent = 1;
  unsigned profile = 1;
  unsigned frequency_index = 4;
  unsigned private_bit = 0;
  unsigned channel_configuration = 2;
  unsigned original_copy = 0;
  unsigned home = 0;
  unsigned copyright_bit = 0;
  unsigned copyright_start = 0;
  unsigned frame_length = 8;  // bytes, header included
  unsigned buffer_fullness = 0x7FF;
  unsigned raw_data_blocks = 0;  // one less than the blocks in the frame
};

// The 7 bytes that the fields make.
Bytes HeaderBytes(const HeaderFields& fields);

// A whole frame: the header and as many bytes `fill` as its length asks for.
Bytes FrameBytes(const HeaderFields& fields, uint8_t fill = 0xAA);

// A frame of `length` bytes with the default fields.
Bytes FrameOfLength(unsigned length, uint8_t fill = 0xAA);

// "FF F1 50" as bytes; blanks and line ends are free.
Bytes Hex(const std::string& text);

Bytes operator+(Bytes left, const Bytes& right);

// Frames of random rates, layouts, block counts and payloads of 3 bytes to
// `longest_payload`, one in four with CRC; a third of the payloads is noise, a
// third is full of syncwords, a third is whole small frames in disguise.
Bytes RandomCapture(std::mt19937* random, int frames, unsigned longest_payload);

// Scans `bytes` as a file. A failure is reported to GoogleTest.
adts::Scan ScanBytes(const Bytes& bytes);

// The file `bytes` scans as the naive scanner says; shows the bytes when not.
void ExpectLikeNaive(const Bytes& bytes);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_ADTS_PIECES_H_
