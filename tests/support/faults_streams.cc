// Overrides of the buffered streams that the plugin uses. A stream goes by its
// descriptor, under which its path is known.
#include <cstdio>

#include "support/faults_intercept.h"

using corvane_test::Closed;
using corvane_test::Intercept;
using corvane_test::Next;
using corvane_test::OnDescriptor;
using corvane_test::OnPath;
using corvane_test::Opened;
using corvane_test::PluginCall;
using corvane_test::Watched;

namespace {

using Fopen = FILE* (*)(const char*, const char*);

FILE* InterceptFopen(Fopen real, const char* path, const char* mode) {
  PluginCall call = OnPath("fopen", path);
  return Intercept<FILE*>(&call, [&](PluginCall& made) {
    FILE* stream = real(path, mode);
    if (stream != nullptr) {
      made.fd = fileno(stream);
      Opened(made.fd, path);
    }
    return stream;
  });
}

}  // namespace

#define CORVANE_WATCHED Watched(__builtin_return_address(0))

extern "C" {

#define CORVANE_OVERRIDE_FOPEN(NAME)                          \
  FILE* NAME(const char* path, const char* mode) {            \
    static const auto real = Next<Fopen>(#NAME);              \
    return CORVANE_WATCHED ? InterceptFopen(real, path, mode) \
                           : real(path, mode);                \
  }
CORVANE_OVERRIDE_FOPEN(fopen)
CORVANE_OVERRIDE_FOPEN(fopen64)

size_t fwrite(const void* data, size_t size, size_t count, FILE* stream) {
  static const auto real =
      Next<size_t (*)(const void*, size_t, size_t, FILE*)>("fwrite");
  if (!CORVANE_WATCHED) {
    return real(data, size, count, stream);
  }
  PluginCall call = OnDescriptor("fwrite", fileno(stream),
                                 static_cast<int64_t>(size * count));
  call.failed = 0;
  return Intercept<size_t>(&call, [&](PluginCall& made) {
    return real(data, 1, static_cast<size_t>(made.size), stream) /
           (size > 0 ? size : 1);
  });
}

int fflush(FILE* stream) {
  static const auto real = Next<int (*)(FILE*)>("fflush");
  if (!CORVANE_WATCHED || stream == nullptr) {
    return real(stream);
  }
  PluginCall call = OnDescriptor("fflush", fileno(stream));
  return Intercept<int>(&call, [&](PluginCall&) { return real(stream); });
}

int fclose(FILE* stream) {
  static const auto real = Next<int (*)(FILE*)>("fclose");
  if (!CORVANE_WATCHED) {
    return real(stream);
  }
  PluginCall call = OnDescriptor("fclose", fileno(stream));
  call.releases = true;
  return Intercept<int>(&call, [&](PluginCall& made) {
    Closed(made.fd);
    return real(stream);
  });
}

}  // extern "C"
