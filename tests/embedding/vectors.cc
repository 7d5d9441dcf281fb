#include "vectors.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace {

FlValue* ints32(const std::vector<int32_t>& v) {
  return fl_value_new_int32_list(v.data(), v.size());
}

FlValue* ints64(const std::vector<int64_t>& v) {
  return fl_value_new_int64_list(v.data(), v.size());
}

FlValue* floats32(const std::vector<float>& v) {
  return fl_value_new_float32_list(v.data(), v.size());
}

FlValue* floats64(const std::vector<double>& v) {
  return fl_value_new_float_list(v.data(), v.size());
}

FlValue* octets(const Octets& v) {
  return fl_value_new_uint8_list(v.data(), v.size());
}

FlValue* list(const std::vector<FlValue*>& elements) {
  FlValue* list = fl_value_new_list();
  for (FlValue* element : elements) fl_value_append_take(list, element);
  return list;
}

FlValue* map(const std::vector<std::pair<FlValue*, FlValue*>>& entries) {
  FlValue* map = fl_value_new_map();
  for (auto [key, value] : entries) fl_value_set_take(map, key, value);
  return map;
}

FlValue* integer(int64_t value) { return fl_value_new_int(value); }
FlValue* real(double value) { return fl_value_new_float(value); }
FlValue* text(const char* value) { return fl_value_new_string(value); }
FlValue* yes() { return fl_value_new_bool(true); }
FlValue* null() { return fl_value_new_null(); }

constexpr int64_t kMax32 = std::numeric_limits<int32_t>::max();
constexpr int64_t kMin32 = std::numeric_limits<int32_t>::min();
constexpr int64_t kMax64 = std::numeric_limits<int64_t>::max();
constexpr int64_t kMin64 = std::numeric_limits<int64_t>::min();

std::vector<Vector> scalars() {
  return {
      {"Null", null, {0}},
      {"True", yes, {1}},
      {"False", [] { return fl_value_new_bool(false); }, {2}},
      {"Zero", [] { return integer(0); }, {3, 0, 0, 0, 0}},
      {"MinusOne", [] { return integer(-1); }, {3, 255, 255, 255, 255}},
      {"IntByteOrder",
       [] { return integer(0x01020304); },
       {3, 0x04, 0x03, 0x02, 0x01}},
      {"LargestInt32", [] { return integer(kMax32); }, {3, 255, 255, 255, 127}},
      {"SmallestInt32", [] { return integer(kMin32); }, {3, 0, 0, 0, 128}},
      {"FirstAboveInt32",
       [] { return integer(kMax32 + 1); },
       {4, 0, 0, 0, 128, 0, 0, 0, 0}},
      {"FirstBelowInt32",
       [] { return integer(kMin32 - 1); },
       {4, 255, 255, 255, 127, 255, 255, 255, 255}},
      {"Int64ByteOrder",
       [] { return integer(0x0102030405060708); },
       {4, 8, 7, 6, 5, 4, 3, 2, 1}},
      {"LargestInt64",
       [] { return integer(kMax64); },
       {4, 255, 255, 255, 255, 255, 255, 255, 127}},
      {"SmallestInt64",
       [] { return integer(kMin64); },
       {4, 0, 0, 0, 0, 0, 0, 0, 128}},
      // 1.0 is 3FF0000000000000, -2.5 is C004000000000000.
      {"One",
       [] { return real(1.0); },
       {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}},
      {"MinusTwoAndAHalf",
       [] { return real(-2.5); },
       {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x04, 0xc0}},
      {"Infinity",
       [] { return real(HUGE_VAL); },
       {6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x7f}},
      {"EmptyString", [] { return text(""); }, {7, 0}},
      {"String", [] { return text("take"); }, {7, 4, 't', 'a', 'k', 'e'}},
      // The size counts bytes, not letters.
      {"Umlaut", [] { return text("\xc3\xbc"); }, {7, 2, 0xc3, 0xbc}},
  };
}

std::vector<Vector> typed_lists() {
  return {
      {"EmptyUint8List", [] { return octets({}); }, {8, 0}},
      {"Uint8List",
       [] {
         return octets({0, 1, 255});
       },
       {8, 3, 0, 1, 255}},
      // Padding follows the size even where no element follows the padding.
      {"EmptyInt32List", [] { return ints32({}); }, {9, 0, 0, 0}},
      {"Int32List",
       [] {
         return ints32({1, -2});
       },
       {9, 2, 0, 0, 1, 0, 0, 0, 254, 255, 255, 255}},
      {"EmptyInt64List", [] { return ints64({}); }, {10, 0, 0, 0, 0, 0, 0, 0}},
      {"Int64List",
       [] {
         return ints64({1, -2});
       },
       {10, 2, 0, 0, 0,   0,   0,   0,   1,   0,   0,   0,
        0,  0, 0, 0, 254, 255, 255, 255, 255, 255, 255, 255}},
      {"EmptyFloat64List",
       [] { return floats64({}); },
       {11, 0, 0, 0, 0, 0, 0, 0}},
      {"Float64List",
       [] { return floats64({1.0}); },
       {11, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}},
      {"EmptyFloat32List", [] { return floats32({}); }, {14, 0, 0, 0}},
      // 1.5 is 3FC00000, -0.5 is BF000000.
      {"Float32List",
       [] {
         return floats32({1.5f, -0.5f});
       },
       {14, 2, 0, 0, 0, 0, 0xc0, 0x3f, 0, 0, 0, 0xbf}},
  };
}

std::vector<Vector> containers() {
  return {
      {"EmptyList", [] { return list({}); }, {12, 0}},
      {"List",
       [] {
         return list({null(), integer(2), text("x")});
       },
       {12, 3, 0, 3, 2, 0, 0, 0, 7, 1, 'x'}},
      {"ListOfLists",
       [] {
         return list({list({}), list({yes()})});
       },
       {12, 2, 12, 0, 12, 1, 1}},
      {"EmptyMap", [] { return map({}); }, {13, 0}},
      {"MapInOrderOfInsertion",
       [] {
         return map({{text("b"), integer(1)}, {text("a"), null()}});
       },
       {13, 2, 7, 1, 'b', 3, 1, 0, 0, 0, 7, 1, 'a', 0}},
      {"MapWithKeysOfAnyType",
       [] {
         return map({{null(), yes()}, {list({}), octets({9})}});
       },
       {13, 2, 0, 1, 12, 0, 8, 1, 9}},
  };
}

// Where a value starts decides its padding: the count is from the start of
// the message, not of the value.
std::vector<Vector> alignments() {
  return {
      {"FloatAtByte3",
       [] {
         return list({yes(), real(1.0)});
       },
       {12, 2, 1, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}},
      {"FloatAtByte7NeedsNoPadding",
       [] {
         return list({text("abc"), real(1.0)});
       },
       {12, 2, 7, 3, 'a', 'b', 'c', 6, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}},
      {"FloatAtByte8NeedsSeven",
       [] {
         return list({text("abcd"), real(1.0)});
       },
       {12, 2, 7, 4, 'a', 'b', 'c', 'd', 6, 0, 0,    0,
        0,  0, 0, 0, 0,   0,   0,   0,   0, 0, 0xf0, 0x3f}},
      {"Int32ListAtByte2NeedsNoPadding",
       [] { return list({ints32({1})}); },
       {12, 1, 9, 1, 1, 0, 0, 0}},
      {"Int32ListAtByte3NeedsThree",
       [] {
         return list({yes(), ints32({1})});
       },
       {12, 2, 1, 9, 1, 0, 0, 0, 1, 0, 0, 0}},
      {"Float32ListAtByte4NeedsTwo",
       [] {
         return list({yes(), yes(), floats32({1.5f})});
       },
       {12, 3, 1, 1, 14, 1, 0, 0, 0, 0, 0xc0, 0x3f}},
      {"Int64ListAtByte5NeedsOne",
       [] {
         return list({text("a"), ints64({1})});
       },
       {12, 2, 7, 1, 'a', 10, 1, 0, 1, 0, 0, 0, 0, 0, 0, 0}},
      {"Float64ListAtByte3NeedsThree",
       [] {
         return list({yes(), floats64({1.0})});
       },
       {12, 2, 1, 11, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xf0, 0x3f}},
  };
}

}  // namespace

const std::vector<Vector>& vectors() {
  static const auto& all = *new std::vector<Vector>([] {
    std::vector<Vector> all = scalars();
    for (const auto& more : {typed_lists(), containers(), alignments()}) {
      all.insert(all.end(), more.begin(), more.end());
    }
    return all;
  }());
  return all;
}
