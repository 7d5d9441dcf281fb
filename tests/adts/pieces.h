// What ADTS files are put together from in these tests, never with the code
// under test.
#ifndef CORVANE_TESTS_ADTS_PIECES_H_
#define CORVANE_TESTS_ADTS_PIECES_H_

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "adts/scan.h"
#include "support/adts_header.h"
#include "support/bytes.h"

namespace corvane_test {

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
