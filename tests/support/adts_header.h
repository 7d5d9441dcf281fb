// An ADTS header written bit by bit from the format's own table, without any of
// the product's code.
#ifndef CORVANE_TESTS_SUPPORT_ADTS_HEADER_H_
#define CORVANE_TESTS_SUPPORT_ADTS_HEADER_H_

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

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_ADTS_HEADER_H_
