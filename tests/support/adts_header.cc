#include "support/adts_header.h"

namespace corvane_test {
namespace {

class BitWriter {
 public:
  BitWriter& Put(unsigned value, int width) {
    for (int bit = width - 1; bit >= 0; --bit) {
      if (count_ % 8 == 0) bytes_.push_back(0);
      if ((value >> bit & 1) != 0) bytes_.back() |= 0x80 >> count_ % 8;
      ++count_;
    }
    return *this;
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
  int count_ = 0;
};

}  // namespace

Bytes HeaderBytes(const HeaderFields& fields) {
  return BitWriter()
      .Put(fields.syncword, 12)
      .Put(fields.id, 1)
      .Put(fields.layer, 2)
      .Put(fields.protection_absent, 1)
      .Put(fields.profile, 2)
      .Put(fields.frequency_index, 4)
      .Put(fields.private_bit, 1)
      .Put(fields.channel_configuration, 3)
      .Put(fields.original_copy, 1)
      .Put(fields.home, 1)
      .Put(fields.copyright_bit, 1)
      .Put(fields.copyright_start, 1)
      .Put(fields.frame_length, 13)
      .Put(fields.buffer_fullness, 11)
      .Put(fields.raw_data_blocks, 2)
      .bytes();
}

}  // namespace corvane_test
