// Owners for what the tests get from the library.
#ifndef CORVANE_TESTS_EMBEDDING_HANDLES_H_
#define CORVANE_TESTS_EMBEDDING_HANDLES_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct Release {
  void operator()(FlValue* value) const { fl_value_unref(value); }
  void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
  void operator()(GError* error) const { g_error_free(error); }
  void operator()(void* object) const { g_object_unref(object); }
};

template <typename T>
using Owned = std::unique_ptr<T, Release>;

using Value = Owned<FlValue>;
using Octets = std::vector<uint8_t>;

inline Owned<GBytes> to_bytes(const Octets& octets) {
  return Owned<GBytes>(g_bytes_new(octets.data(), octets.size()));
}

inline Octets to_octets(GBytes* bytes) {
  gsize size;
  const auto* data =
      static_cast<const uint8_t*>(g_bytes_get_data(bytes, &size));
  return Octets(data, data + size);
}

inline std::string text_of(FlValue* value) {
  g_autofree gchar* text = fl_value_to_string(value);
  return text;
}

#endif  // CORVANE_TESTS_EMBEDDING_HANDLES_H_
