// What is promised of every call that may fail: where it fails, the answer's
// code, and the words that stand before the reason.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_PROMISES_H_
#define CORVANE_TESTS_FAULTS_SWEEP_PROMISES_H_

#include <cerrno>
#include <stdexcept>
#include <string>

#include "faults/faults_fixture.h"

namespace corvane_test {

// What a failure says that sets no errno.
enum class WithoutErrno {
  kSuccess,      // the system's text for 0
  kInputOutput,  // EIO in its place, for 0 would pass for success
};

struct Promise {
  const char* during;
  const char* call;
  const char* code;             // of the answer
  const char* code_if_missing;  // for ENOENT
  const char* words;
  WithoutErrno without;
};

constexpr char kWrite[] = "WRITE_FAILED";
constexpr char kFinalize[] = "FINALIZE_FAILED";
constexpr char kMissing[] = "CAPTURE_MISSING";
constexpr char kPrepare[] = "resumePath could not prepare capture";
constexpr char kSealing[] = "sealing capture failed";
constexpr char kPatch[] = "Failed to patch WAV header";
constexpr auto kSuccess = WithoutErrno::kSuccess;
constexpr auto kInputOutput = WithoutErrno::kInputOutput;

// System calls whose failure is answered.
constexpr Promise kPromises[] = {
    {"start", "open", kWrite, kWrite, "Failed to create capture file",
     kSuccess},
    {"frame", "write", kWrite, kWrite, "Failed to append AAC frame", kSuccess},
    {"flush", "fsync", kWrite, kWrite, "flush failed", kSuccess},
    {"resumePath", "open", kWrite, kMissing, "capture not available for resume",
     kSuccess},
    {"resumePath", "fstat", kWrite, kWrite, kPrepare, kInputOutput},
    {"resumePath", "pread", kWrite, kWrite, kPrepare, kInputOutput},
    {"resumePath", "ftruncate", kWrite, kWrite, kPrepare, kInputOutput},
    {"seal", "open", kFinalize, kMissing, "capture not available", kSuccess},
    {"seal", "fstat", kFinalize, kFinalize, kSealing, kInputOutput},
    {"seal", "pread", kFinalize, kFinalize, kSealing, kInputOutput},
    {"seal", "ftruncate", kFinalize, kFinalize, kSealing, kInputOutput},
    {"seal", "fsync", kFinalize, kFinalize, kSealing, kInputOutput},
    {"seal", "close", kFinalize, kFinalize, kSealing, kInputOutput},
    {"wav", "stat", kFinalize, kMissing, "WAV not available", kSuccess},
    {"wav", "fopen", kFinalize, kFinalize, kPatch, kSuccess},
    {"wav", "fwrite", kFinalize, kFinalize, kPatch, kInputOutput},
    {"wav", "fflush", kFinalize, kFinalize, kPatch, kInputOutput},
    {"wav", "fsync", kFinalize, kFinalize, kPatch, kInputOutput},
    {"wav", "fclose", kFinalize, kFinalize, kPatch, kInputOutput},
};

inline Reply Promised(const std::string& during, const PluginCall& call,
                      const std::string& path) {
  for (const Promise& each : kPromises) {
    if (during != each.during || std::string(call.name) != each.call) continue;
    const bool nothing_said =
        call.error == 0 && each.without == WithoutErrno::kInputOutput;
    return ErrnoError(call.error == ENOENT ? each.code_if_missing : each.code,
                      each.words, path, nothing_said ? EIO : call.error);
  }
  throw std::logic_error("nothing is promised of " + std::string(call.name) +
                         " during " + during);
}

// libav calls: the words before libav's own text.
struct CodecPromise {
  const char* call;
  const char* words;
};

constexpr CodecPromise kCodecPromises[] = {
    {"avcodec_open2", "avcodec_open2"},
    {"av_channel_layout_copy", "av_frame_get_buffer"},
    {"av_frame_get_buffer", "av_frame_get_buffer"},
    {"av_frame_make_writable", "av_frame_make_writable"},
    {"avcodec_send_frame", "avcodec_send_frame"},
    {"avcodec_receive_packet", "avcodec_receive_packet"},
};

inline Reply PromisedOfCodec(const PluginCall& call, const std::string& path) {
  for (const CodecPromise& each : kCodecPromises) {
    if (std::string(call.name) == each.call) {
      return LibavError(each.words, path, static_cast<int>(call.result));
    }
  }
  throw std::logic_error("nothing is promised of " + std::string(call.name));
}

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_PROMISES_H_
