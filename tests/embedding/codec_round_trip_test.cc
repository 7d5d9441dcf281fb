// Values and damage that nobody thought of, from a seed that a failure prints;
// CORVANE_TEST_SEED brings a run back.
#include <gmock/gmock.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "codec_fixture.h"

namespace {

class RandomCodecTest : public CodecTest {
 protected:
  RandomCodecTest() {
    RecordProperty("seed", static_cast<int>(seed_));
    std::printf("seed %u\n", seed_);
  }

  static unsigned Seed() {
    const char* given = std::getenv("CORVANE_TEST_SEED");
    return given != nullptr
               ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
               : std::random_device{}();
  }

  uint32_t Below(uint32_t bound) { return random_() % bound; }

  // Any bits that are not a NaN, which would equal nothing.
  template <typename Float, typename Bits>
  Float RandomFloat() {
    const Bits bits = static_cast<Bits>(random64_());
    Float value;
    std::memcpy(&value, &bits, sizeof value);
    return std::isnan(value) ? Float{0} : value;
  }

  template <typename T, typename Make>
  std::vector<T> Elements(Make make) {
    // Mostly short, now and then past the first size form.
    std::vector<T> elements(Below(20) == 0 ? 250 + Below(10) : Below(6));
    for (T& element : elements) element = make();
    return elements;
  }

  FlValue* RandomScalar() {
    switch (Below(5)) {
      case 0:
        return fl_value_new_null();
      case 1:
        return fl_value_new_bool(Below(2) == 0);
      case 2:
        // Of every magnitude.
        return fl_value_new_int(static_cast<int64_t>(random64_()) >> Below(64));
      case 3:
        return fl_value_new_float(RandomFloat<double, uint64_t>());
      default: {
        const auto text = Elements<char>(
            [this] { return static_cast<char>(1 + Below(255)); });
        return fl_value_new_string_sized(text.data(), text.size());
      }
    }
  }

  FlValue* RandomTypedList() {
    switch (Below(5)) {
      case 0: {
        const auto v = Elements<uint8_t>([this] { return Below(256); });
        return fl_value_new_uint8_list(v.data(), v.size());
      }
      case 1: {
        const auto v = Elements<int32_t>([this] { return random64_(); });
        return fl_value_new_int32_list(v.data(), v.size());
      }
      case 2: {
        const auto v = Elements<int64_t>([this] { return random64_(); });
        return fl_value_new_int64_list(v.data(), v.size());
      }
      case 3: {
        const auto v =
            Elements<float>([this] { return RandomFloat<float, uint32_t>(); });
        return fl_value_new_float32_list(v.data(), v.size());
      }
      default: {
        const auto v = Elements<double>(
            [this] { return RandomFloat<double, uint64_t>(); });
        return fl_value_new_float_list(v.data(), v.size());
      }
    }
  }

  FlValue* RandomValue(int depth) {
    const uint32_t kind = Below(depth > 0 ? 6 : 4);
    if (kind < 2) return RandomScalar();
    if (kind < 4) return RandomTypedList();
    const bool is_list = kind == 4;
    FlValue* container = is_list ? fl_value_new_list() : fl_value_new_map();
    for (uint32_t i = Below(6); i > 0; --i) {
      FlValue* value = RandomValue(depth - 1);
      if (is_list) {
        fl_value_append_take(container, value);
      } else {
        fl_value_set_take(container, RandomValue(depth - 1), value);
      }
    }
    return container;
  }

  const unsigned seed_ = Seed();
  std::mt19937 random_{seed_};
  std::mt19937_64 random64_{seed_};
  testing::ScopedTrace trace_{__FILE__, __LINE__,
                              "CORVANE_TEST_SEED=" + std::to_string(seed_)};
};

TEST_F(RandomCodecTest, WhatIsEncodedIsDecodedAsItWas) {
  for (int i = 0; i < 3000 && !HasFailure(); ++i) {
    const Value value(RandomValue(4));
    const Octets message = Encode(value.get());
    const Value back = Decode(message);
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(fl_value_equal(back.get(), value.get()))
        << "before " << text_of(value.get()) << "\nafter  "
        << text_of(back.get());
    EXPECT_EQ(Encode(back.get()), message);
  }
}

TEST_F(RandomCodecTest, EveryCutOfAMessageIsOutOfData) {
  for (int i = 0; i < 100 && !HasFailure(); ++i) {
    const Value value(RandomValue(3));
    const Octets message = Encode(value.get());
    const Octets cut(message.begin(), message.begin() + Below(message.size()));
    if (cut.empty()) continue;  // No bytes at all are a message again.
    EXPECT_EQ(Refusal(cut), FL_MESSAGE_CODEC_ERROR_OUT_OF_DATA);
  }
}

// TryDecode holds that there is a value or an error; here any will do, as long
// as what was accepted can be sent on.
TEST_F(RandomCodecTest, AnyDamageGivesAValueOrAnError) {
  for (int i = 0; i < 3000 && !HasFailure(); ++i) {
    const Value value(RandomValue(3));
    Octets message = Encode(value.get());
    for (uint32_t hits = 1 + Below(4); hits > 0; --hits) {
      message[Below(message.size())] = Below(256);
    }
    const Decoded decoded = TryDecode(message);
    if (decoded.value != nullptr) Encode(decoded.value.get());
  }
}

}  // namespace
