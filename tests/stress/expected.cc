#include "stress/expected.h"

#include <cerrno>

#include "support/adts_frames.h"

namespace corvane_test {
namespace {

constexpr size_t kAacFrame = 1024;  // sample frames
constexpr size_t kSampleFrame = 2;  // bytes

}  // namespace

Reply Expected::Start(const std::string& path) {
  Close();
  frames_[path] = 0;
  Open(path);
  return NullReply();
}

Reply Expected::Append(size_t bytes) {
  if (!open_) {
    return PlainError("NOT_RECORDING", "append of " + std::to_string(bytes) +
                                           " bytes with no open recording");
  }
  if (paused_) {
    dropped_ += static_cast<int64_t>(bytes);
  } else {
    fed_ += bytes / kSampleFrame;
  }
  return NullReply();
}

Reply Expected::Pause() {
  paused_ = open_;
  Drain();
  return NullReply();
}

Reply Expected::Resume() {
  paused_ = false;
  return NullReply();
}

Reply Expected::Stop() {
  if (!open_) {
    return PlainError("NOT_RECORDING", "stop with no open recording");
  }
  Close();
  return Seal(path_, dropped_);
}

Reply Expected::Cancel() {
  Close();
  return NullReply();
}

Reply Expected::ResumePath(const std::string& path) {
  Close();
  if (frames_.count(path) == 0) {
    return Missing(path, "capture not available for resume");
  }
  Open(path);
  return NullReply();
}

Reply Expected::FinalizePath(const std::string& path) {
  int64_t dropped = 0;
  if (open_ && path_ == path) {
    Close();
    dropped = dropped_;
  }
  return Seal(path, dropped);
}

void Expected::Close() {
  Drain();
  open_ = false;
  paused_ = false;
}

void Expected::Open(const std::string& path) {
  open_ = true;
  path_ = path;
  dropped_ = 0;
}

// The encoder's priming adds a frame to those that were fed.
void Expected::Drain() {
  if (fed_ > 0) frames_[path_] += (fed_ + kAacFrame - 1) / kAacFrame + 1;
  fed_ = 0;
}

Reply Expected::Seal(const std::string& path, int64_t dropped) {
  if (frames_.count(path) == 0) {
    return Missing(path, "capture not available");
  }
  const size_t frames = frames_.at(path);
  if (frames == 0) {
    return FileError("VERIFY_FAILED",
                     "capture holds no complete AAC frame (0 bytes)", path);
  }
  return Figures(path, FramesToMs(frames, kStressRate), 0, dropped);
}

Reply Expected::Missing(const std::string& path, const char* what) const {
  return ErrnoError("CAPTURE_MISSING", what, path, ENOENT);
}

}  // namespace corvane_test
