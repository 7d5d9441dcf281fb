// What reading and writing of the standard encoding share.
#ifndef CORVANE_EMBEDDING_STANDARD_ENCODING_H_
#define CORVANE_EMBEDDING_STANDARD_ENCODING_H_

#include <flutter_linux/flutter_linux.h>

namespace embedding {

// The byte in front of every value.
enum WireType : uint8_t {
  kWireNull = 0,
  kWireTrue = 1,
  kWireFalse = 2,
  kWireInt32 = 3,
  kWireInt64 = 4,
  kWireFloat64 = 6,
  kWireString = 7,
  kWireUint8List = 8,
  kWireInt32List = 9,
  kWireInt64List = 10,
  kWireFloat64List = 11,
  kWireList = 12,
  kWireMap = 13,
  kWireFloat32List = 14,
};

// A size byte below this is the size itself.
constexpr uint8_t kSizeIn16Bits = 254;
constexpr uint8_t kSizeIn32Bits = 255;

// Elements are copied as they lie in memory.
static_assert(G_BYTE_ORDER == G_LITTLE_ENDIAN,
              "the standard encoding is little endian");

// Bytes from `offset` to the next multiple of `alignment`, a power of two.
constexpr size_t padding(size_t offset, size_t alignment) {
  return (alignment - offset % alignment) % alignment;
}

// Counts the values inside which a value is being read or written, so that a
// hostile message or a list that holds itself ends in an error and not at the
// end of the stack. One per recursion step; only ok() ones may go deeper. The
// count belongs to the thread, because the functions that recurse are public,
// overridable and without a place to pass it.
class NestingGuard {
 public:
  // Containers inside each other; far beyond any real message, and within the
  // smallest usual thread stack even where frames are large.
  static constexpr int kMaxDepth = 1000;

  explicit NestingGuard(GError** error);
  ~NestingGuard();
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;

  bool ok() const { return ok_; }

 private:
  const bool ok_;
};

// FlStandardMessageCodecClass's functions for the types above.
gboolean write_standard_value(FlStandardMessageCodec* codec, GByteArray* buffer,
                              FlValue* value, GError** error);
FlValue* read_standard_value(FlStandardMessageCodec* codec, GBytes* buffer,
                             size_t* offset, int type, GError** error);

}  // namespace embedding

#endif  // CORVANE_EMBEDDING_STANDARD_ENCODING_H_
