// The calls; the files and the state around them are in walk_world.cc.
#include "crash/walk_model.h"

#include <cerrno>

#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr size_t kFrameSamples = 1024;
constexpr size_t kWavHeader = 44;

}  // namespace

std::vector<std::string> WalkModel::Call(const Step& step,
                                         const Bytes& written) {
  lines_.clear();
  written_ = written;
  CarryOut(step);
  if (!written_.empty()) complaint_ = "more was written than promised";
  return lines_;
}

void WalkModel::CarryOut(const Step& step) {
  if (step.what == Do::kRestart) {
    Close("plugin dispose");
    Forget();
    return;
  }
  bool quiet = false;
  const std::string method = MethodOf(step);
  const Reply reply = Dispatch(step, &quiet);
  if (reply.kind == Reply::Kind::kError && !quiet) {
    lines_.push_back(Failed(method, reply));
  }
  lines_.push_back(Answer(method, reply));
}

Reply WalkModel::Dispatch(const Step& step, bool* quiet) {
  switch (step.what) {
    case Do::kStart:
      return Start(step);
    case Do::kAppend:
      *quiet = !session_.open && append_failure_reported_;
      return Append(step.count);
    case Do::kPause:
      session_.paused = session_.open;
      Drain();
      return NullReply();
    case Do::kResume:
      session_.paused = false;
      return NullReply();
    case Do::kStop:
      return Stop();
    case Do::kCancel:
      Close("cancel");
      return NullReply();
    case Do::kFlush:
      return NullReply();
    case Do::kResumePath:
      return ResumePath(step);
    case Do::kFinalizePath:
      return FinalizePath(step);
    case Do::kFinalizeWavOnly:
      return FinalizeWavOnly(step);
    case Do::kBadCall:
      return BadCalls()[step.count].answer;
    default:
      return NotImplemented();
  }
}

Reply WalkModel::Start(const Step& step) {
  Close("start over an open session");
  const std::string& path = kWalkPaths[step.path];
  const std::string real = Normal(path);
  const auto file = world_.files.find(real);
  const bool is_empty_file = file != world_.files.end() && file->second.empty();
  if (world_.Has(real) && !is_empty_file) {
    const auto slot = FreeSlot(path);
    if (!slot) {
      lines_.push_back(Error("no free orphan slot for " + path));
      return FileError("WRITE_FAILED",
                       "existing audio at target could not be preserved", path);
    }
    world_.Move(real, Normal(*slot));
    Changed();
    lines_.push_back(
        Warning("preserved orphan audio " + path + " as " + *slot));
  }
  const int error = ParentError(path);
  if (error != 0) {
    return ErrnoError("WRITE_FAILED", "Failed to create capture file", path,
                      error);
  }
  world_.files[real] = {};
  Changed();
  Open(step);
  lines_.push_back(StartLine(path, step.rate, step.channels));
  return NullReply();
}

Reply WalkModel::Append(size_t bytes) {
  if (!session_.open) {
    append_failure_reported_ = true;
    return PlainError("NOT_RECORDING", "append of " + std::to_string(bytes) +
                                           " bytes with no open recording");
  }
  if (session_.paused) {
    dropped_ += bytes;
    return NullReply();
  }
  const size_t sample_frame = session_.channels * 2;
  if (bytes == 0) return NullReply();
  const size_t total = session_.carry + bytes;
  session_.carry = total % sample_frame;
  if (total < sample_frame) return NullReply();
  if (!session_.codec) {
    session_.codec = true;
    lines_.push_back(EncoderLine(session_.rate, session_.channels));
  }
  const size_t fill = session_.fill + total / sample_frame;
  session_.fill = fill % kFrameSamples;
  for (size_t i = 0; i < fill / kFrameSamples; ++i) {
    // The encoder keeps the first frame for itself until the second comes.
    if (session_.sends++ > 0) Write(1);
  }
  return NullReply();
}

Reply WalkModel::Stop() {
  if (!session_.open) {
    return PlainError("NOT_RECORDING", "stop with no open recording");
  }
  const std::string path = session_.path;
  Close("stop");
  return Seal(path, dropped_, "stop");
}

Reply WalkModel::ResumePath(const Step& step) {
  Close("resumePath over an open session");
  const std::string& path = kWalkPaths[step.path];
  const int error = OpenError(path);
  if (error != 0) {
    return ErrnoError(error == ENOENT ? "CAPTURE_MISSING" : "WRITE_FAILED",
                      "capture not available for resume", path, error);
  }
  const adts::Scan scan = Trim(path);
  Open(step);
  lines_.push_back(Info("resumePath capture=" + path +
                        " bytes=" + std::to_string(scan.valid_end) +
                        " durationMs=" + std::to_string(scan.DurationMs())));
  return NullReply();
}

Reply WalkModel::FinalizePath(const Step& step) {
  const std::string& path = kWalkPaths[step.path];
  const std::string& output = kWalkPaths[step.count];
  if (Normal(path) != Normal(output)) {
    return FileError("INVALID_ARGS",
                     "ADTS capture is its own deliverable; outputPath " +
                         output + " must equal capturePath",
                     path);
  }
  uint64_t dropped = 0;
  if (Records(path)) {
    dropped = dropped_;
    Close("finalizePath");
  }
  return Seal(path, dropped, "finalizePath");
}

Reply WalkModel::FinalizeWavOnly(const Step& step) {
  const std::string& path = kWalkPaths[step.path];
  const int error = OpenError(path);
  if (error == EISDIR) {
    return ErrnoError("FINALIZE_FAILED", "Failed to patch WAV header", path,
                      error);
  }
  if (error != 0) {
    return ErrnoError(error == ENOENT ? "CAPTURE_MISSING" : "FINALIZE_FAILED",
                      "WAV not available", path, error);
  }
  Bytes& file = world_.files[Normal(path)];
  const size_t data = file.size() < kWavHeader ? 0 : file.size() - kWavHeader;
  const auto little_endian = [](uint32_t number, int bytes) {
    Bytes out;
    for (int i = 0; i < bytes; ++i) out.push_back(number >> (8 * i) & 0xFF);
    return out;
  };
  const auto text = [](const char* word) { return Bytes(word, word + 4); };
  Bytes header;
  for (const Bytes& field :
       {text("RIFF"), little_endian(data + 36, 4), text("WAVE"), text("fmt "),
        little_endian(16, 4), little_endian(1, 2),
        little_endian(step.channels, 2), little_endian(step.rate, 4),
        little_endian(step.rate * step.channels * 2, 4),
        little_endian(step.channels * 2, 2), little_endian(16, 2), text("data"),
        little_endian(data, 4)}) {
    header = Concat(header, field);
  }
  file = Concat(header, Slice(file, kWavHeader));
  Changed();
  lines_.push_back(Info("finalizeWavOnly patched " + path +
                        " dataBytes=" + std::to_string(data)));
  return NullReply();
}

Reply WalkModel::Seal(const std::string& path, uint64_t dropped,
                      const std::string& label) {
  const std::string count = " droppedAppendBytes=" + std::to_string(dropped);
  lines_.push_back(Info(label + " start capture=" + path + count));
  const int error = OpenError(path);
  if (error != 0) {
    return ErrnoError(error == ENOENT ? "CAPTURE_MISSING" : "FINALIZE_FAILED",
                      "capture not available", path, error);
  }
  const adts::Scan scan = Trim(path);
  const auto size = static_cast<int64_t>(world_.files[Normal(path)].size());
  if (scan.samples < 1) {
    return FileError("VERIFY_FAILED",
                     "capture holds no complete AAC frame (" +
                         std::to_string(size) + " bytes)",
                     path);
  }
  lines_.push_back(
      Info(label + " end capture=" + path + " bytes=" + std::to_string(size) +
           " durationMs=" + std::to_string(scan.DurationMs()) +
           " skippedBytes=" + std::to_string(scan.skipped_bytes) + count));
  return Figures(path, scan.DurationMs(), size, dropped);
}

}  // namespace corvane_test
