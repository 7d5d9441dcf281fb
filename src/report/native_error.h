// The record of every failure, and its builders. Value types; any thread.
#ifndef CORVANE_SRC_REPORT_NATIVE_ERROR_H_
#define CORVANE_SRC_REPORT_NATIVE_ERROR_H_

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

extern "C" {
#include <libavutil/error.h>
}

namespace {

// The complete set of error codes.
constexpr char kErrInvalidArgs[] = "INVALID_ARGS";
constexpr char kErrUnsupportedFormat[] = "UNSUPPORTED_FORMAT";
constexpr char kErrNotRecording[] = "NOT_RECORDING";
constexpr char kErrEncodeFailed[] = "ENCODE_FAILED";
constexpr char kErrWriteFailed[] = "WRITE_FAILED";
constexpr char kErrCaptureMissing[] = "CAPTURE_MISSING";
constexpr char kErrFinalizeFailed[] = "FINALIZE_FAILED";
constexpr char kErrVerifyFailed[] = "VERIFY_FAILED";

constexpr char kDomainFfmpeg[] = "ffmpeg";
constexpr char kDomainErrno[] = "errno";

struct NativeError {
  std::string code;     // one of the codes above
  std::string message;  // for a person
  std::string domain;   // where native_code comes from; empty: nowhere
  bool has_native_code = false;
  int64_t native_code = 0;  // an errno value, or a negative libav number
  std::string path;         // the file concerned; may be empty
  bool quiet = false;       // logged before: answer it, don't log it again
};

// An error that no library reported: it has no domain and no native code.
NativeError plain_error(const char* code, std::string message,
                        std::string path = {}) {
  NativeError error;
  error.code = code;
  error.message = std::move(message);
  error.path = std::move(path);
  return error;
}

NativeError domain_error(const char* code, const std::string& message,
                         const std::string& path, const char* domain,
                         int native_code) {
  NativeError error = plain_error(code, message, path);
  error.domain = domain;
  error.has_native_code = true;
  error.native_code = native_code;
  return error;
}

// The errno of the call that just failed. One that sets none has failed all the
// same, and 0 would pass for success.
int failure_errno() { return errno == 0 ? EIO : errno; }

// `what` names the operation that failed; `errnum` is the errno that the
// caller saved right behind it, for any call in between may change errno.
NativeError errno_error(const char* code, const std::string& what,
                        const std::string& path, int errnum) {
  return domain_error(code, what + ": " + strerror(errnum), path, kDomainErrno,
                      errnum);
}

// `averror` is the negative result of a libav function.
NativeError ffmpeg_error(const char* code, const std::string& what,
                         const std::string& path, int averror) {
  std::array<char, 128> text = {};
  av_strerror(averror, text.data(), text.size());
  return domain_error(code, what + ": " + text.data(), path, kDomainFfmpeg,
                      averror);
}

}  // namespace

#endif  // CORVANE_SRC_REPORT_NATIVE_ERROR_H_
