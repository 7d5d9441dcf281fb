// "finalizeWavOnly": repairs in place the header of a 16-bit PCM WAV file whose
// writer died before it could write the sizes. The audio is neither read nor
// touched. Worker thread, but for the check of the arguments.
#ifndef CORVANE_SRC_FINALIZE_FINALIZE_WAV_ONLY_H_
#define CORVANE_SRC_FINALIZE_FINALIZE_WAV_ONLY_H_

#include <flutter_linux/flutter_linux.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>

#include "encoder/format_args.h"
#include "report/native_error.h"
#include "report/reply.h"
#include "worker/plugin_state.h"

namespace {

constexpr size_t kWavHeaderSize = 44;

// The most that the header can say: the RIFF size, 36 bytes more, has 32 bits.
constexpr uint64_t kMaxWavDataBytes = 4294967259;

using WavHeader = std::array<uint8_t, kWavHeaderSize>;

// The canonical header (RIFF/WAVE, 1991) of 16-bit PCM that begins right
// behind it. Values too large for their field lose their upper bits.
WavHeader wav_header(const FormatArgs& format, uint32_t data_bytes) {
  const auto rate = static_cast<uint32_t>(format.sample_rate);
  const auto channels = static_cast<uint32_t>(format.channels);
  WavHeader header;
  auto* out = header.begin();
  const auto text = [&out](const char* id) { out = std::copy_n(id, 4, out); };
  const auto number = [&out](uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      *out++ = static_cast<uint8_t>(value >> (8 * i));
    }
  };
  text("RIFF");
  number(data_bytes + 36, 4);
  text("WAVE");
  text("fmt ");
  number(16, 4);  // size of this chunk
  number(1, 2);   // integer PCM
  number(channels, 2);
  number(rate, 4);
  number(rate * channels * 2, 4);  // bytes a second
  number(channels * 2, 2);         // bytes a sample frame
  number(16, 2);                   // bits a sample
  text("data");
  number(data_bytes, 4);
  return header;
}

// Flushes, syncs and closes `file` whatever `errnum` holds already; returns the
// first failure.
int finish_wav(FILE* file, int errnum) {
  const auto keep_first = [&errnum](int result) {
    if (result != 0 && errnum == 0) {
      errnum = failure_errno();
    }
  };
  keep_first(fflush(file));
  keep_first(fsync(fileno(file)));
  keep_first(fclose(file));
  return errnum;
}

// Returns 0 or an errno value.
int patch_wav(const std::string& path, const WavHeader& header) {
  FILE* file = fopen(path.c_str(), "r+b");
  if (file == nullptr) {
    return errno;
  }
  int errnum = 0;
  if (fwrite(header.data(), 1, header.size(), file) < header.size()) {
    errnum = failure_errno();
  }
  return finish_wav(file, errnum);
}

Reply finalize_wav(PluginState* state, const std::string& path,
                   const FormatArgs& format) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    const int errnum = errno;
    if (errnum != 0) {
      return error_reply(errno_error(
          errnum == ENOENT ? kErrCaptureMissing : kErrFinalizeFailed,
          "WAV not available", path, errnum));
    }
    status.st_size = 0;  // a failure without a reason: no data is known of
  }
  // A file system may tell a size below 0: that is no sound, not a lot of it.
  const auto size = static_cast<uint64_t>(std::max<off_t>(status.st_size, 0));
  const uint64_t data_bytes =
      size >= kWavHeaderSize ? size - kWavHeaderSize : 0;
  if (data_bytes > kMaxWavDataBytes) {
    state->Log(kLevelWarning, "WAV " + path + " holds " +
                                  std::to_string(data_bytes) +
                                  " data bytes; header capped at " +
                                  std::to_string(kMaxWavDataBytes));
  }
  const auto capped =
      static_cast<uint32_t>(std::min(data_bytes, kMaxWavDataBytes));
  const int errnum = patch_wav(path, wav_header(format, capped));
  if (errnum != 0) {
    return error_reply(errno_error(kErrFinalizeFailed,
                                   "Failed to patch WAV header", path, errnum));
  }
  state->Log(kLevelInfo, "finalizeWavOnly patched " + path +
                             " dataBytes=" + std::to_string(data_bytes));
  return Reply();
}

// Main thread.
void handle_finalize_wav_only(FlMethodCall* call, FlValue* args,
                              PluginState* state) {
  FormatArgs format;
  const char* path = lookup_path(args, "wavPath");
  if (path == nullptr || !lookup_wav_format(args, &format)) {
    enqueue_invalid(state, call,
                    "finalizeWavOnly requires wavPath, sampleRate, channels");
    return;
  }
  state->Enqueue(call, [state, path = std::string(path), format] {
    return finalize_wav(state, path, format);
  });
}

}  // namespace

#endif  // CORVANE_SRC_FINALIZE_FINALIZE_WAV_ONLY_H_
