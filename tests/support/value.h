// Method arguments, written the way a test reads best:
//   Value::Map({{"capturePath", path}, {"sampleRate", 48000}})
#ifndef CORVANE_TESTS_SUPPORT_VALUE_H_
#define CORVANE_TESTS_SUPPORT_VALUE_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

// A shared FlValue; the default is an absent one (a NULL pointer). Main thread
// only, because the embedding counts references without atomics.
class Value {
 public:
  Value() = default;
  Value(const char* text);
  Value(const std::string& text);
  Value(int number);
  Value(int64_t number);
  Value(double number);
  Value(const Bytes& bytes);  // a Uint8List

  static Value Null();
  static Value Bool(bool truth);
  static Value Int32List(const std::vector<int32_t>& numbers);
  static Value List(std::initializer_list<Value> items);
  static Value Map(std::initializer_list<std::pair<const char*, Value>> items);

  Value(const Value& other);
  Value& operator=(Value other);
  ~Value();

  // A copy of this map with `key` set as well.
  Value With(const char* key, const Value& value) const;
  // A copy of this map without `key`.
  Value Without(const char* key) const;

  FlValue* get() const { return value_; }
  // For messages about a failed expectation.
  std::string Text() const;

 private:
  explicit Value(FlValue* taken) : value_(taken) {}

  FlValue* value_ = nullptr;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_VALUE_H_
