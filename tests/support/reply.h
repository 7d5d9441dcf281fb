// What the Dart side sees of one answered call, as a value that a test compares
// whole and that prints itself in a failed expectation.
#ifndef CORVANE_TESTS_SUPPORT_REPLY_H_
#define CORVANE_TESTS_SUPPORT_REPLY_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>

namespace corvane_test {

struct Reply {
  enum class Kind {
    kNull,            // success without a result
    kFigures,         // success with the five figures of a sealed capture
    kError,           // code, message and the details map
    kNotImplemented,  // no such method
    kMalformed,       // none of these; `message` says what came instead
  };

  Kind kind = Kind::kNull;

  std::string path;
  int64_t duration_ms = 0;
  int64_t bytes = 0;
  int64_t source_duration_ms = 0;
  int64_t dropped_append_bytes = 0;

  std::string code;
  std::string message;
  // The error's details; an empty optional stands for null.
  std::optional<std::string> domain;
  std::optional<int64_t> native_code;
  std::optional<std::string> error_path;
};

bool operator==(const Reply& a, const Reply& b);
std::string ToString(const Reply& reply);
std::ostream& operator<<(std::ostream& out, const Reply& reply);

// The expected replies.
Reply NullReply();
Reply Figures(const std::string& path, int64_t duration_ms, int64_t bytes,
              int64_t dropped_append_bytes = 0);
Reply NotImplemented();
// An error without domain, native code and path.
Reply PlainError(const std::string& code, const std::string& message);
Reply InvalidArgs(const std::string& message);
// A verdict on a file: a path, yet no domain and no native code.
Reply FileError(const std::string& code, const std::string& message,
                const std::string& path);
// A failed system call: the system's text is added to `what`.
Reply ErrnoError(const std::string& code, const std::string& what,
                 const std::string& path, int errnum);
// A failed libav call; `text` is what av_strerror() says of `averror`.
Reply FfmpegError(const std::string& what, const std::string& text,
                  const std::string& path, int averror);

// Reads a response as it came over the channel. Key order and types are part
// of the protocol: anything unexpected gives kMalformed.
Reply ReadReply(FlMethodResponse* response);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_REPLY_H_
