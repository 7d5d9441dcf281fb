// What makes a file trustworthy again.
#include <algorithm>

#include "channel/wav_fixture.h"
#include "faults/sweep_narrator.h"
#include "faults/sweep_promises.h"

namespace corvane_test {

Reply Narrator::Seal(const std::string& path, uint64_t dropped,
                     const std::string& label) {
  subject_ = path;
  Log(SealStartLine(path, dropped, label));
  const SweptCall open = Next("open");
  if (HasFailed(open)) {
    return Told("seal", open);
  }
  adts::Scan scan = {};
  MaybeError error = RepairAndSync(path, &scan);
  const SweptCall close = Next("close");
  if (HasFailed(close) && error) {
    Keep(SilentFailure::kBehindAnotherFailure);
  } else if (HasFailed(close)) {
    error = Told("seal", close);
  }
  if (error) return *error;
  const size_t bytes = files_->Size(path);
  if (scan.samples == 0) {
    return FileError("VERIFY_FAILED",
                     "capture holds no complete AAC frame (" +
                         std::to_string(bytes) + " bytes)",
                     path);
  }
  const Reply figures = Figures(
      path, FramesToMs(static_cast<size_t>(scan.samples / 1024), kSweepRate),
      static_cast<int64_t>(bytes), static_cast<int64_t>(dropped));
  Log(SealEndLine(figures, scan.skipped_bytes, label));
  return figures;
}

Narrator::MaybeError Narrator::RepairAndSync(const std::string& path,
                                             adts::Scan* scan) {
  MaybeError error = Trim("seal", path, scan);
  for (const char* name : {"fsync", "fstat"}) {
    if (error) break;
    const SweptCall call = Next(name);
    if (HasFailed(call)) error = Told("seal", call);
  }
  return error;
}

Narrator::MaybeError Narrator::Trim(const char* during, const std::string& path,
                                    adts::Scan* scan) {
  MaybeError error = Read(during, path);
  if (error) return error;
  const adts::Scan found = files_->Scan(path);
  const SweptCall size = Next("fstat");
  if (HasFailed(size)) return Told(during, size);
  const auto end = static_cast<size_t>(found.stream_end);
  if (files_->Size(path) > end) {
    Log(DroppingLine(files_->Size(path) - end, path));
    const SweptCall cut = Next("ftruncate");
    if (HasFailed(cut)) return Told(during, cut);
    files_->CutTail(path, cut.size);
  }
  if (found.skipped_bytes > 0) {
    Log(ForeignLine(path, static_cast<size_t>(found.skipped_bytes)));
  }
  *scan = found;
  return std::nullopt;
}

// The scan. How often it reads is its own business, but for an empty file.
Narrator::MaybeError Narrator::Read(const char* during,
                                    const std::string& path) {
  const SweptCall size = Next("fstat");
  if (HasFailed(size)) return Told(during, size);
  if (files_->IsEmpty(path)) return std::nullopt;
  MaybeError error;
  do {
    const SweptCall read = Next("pread");
    if (!HasFailed(read)) continue;
    if (read.error == EINTR) {
      Keep(SilentFailure::kMadeAgain);
    } else if (error) {
      Keep(SilentFailure::kBehindAnotherFailure);
    } else {
      error = Told(during, read);
    }
  } while (IsNext("pread"));
  return error;
}

Reply Narrator::ResumePath(const std::string& path) {
  Close("resumePath over an open session");
  subject_ = path;
  const SweptCall open = Next("open");
  if (HasFailed(open)) return Told("resumePath", open);
  adts::Scan scan = {};
  const MaybeError error = Trim("resumePath", path, &scan);
  if (error) {
    if (HasFailed(Next("close"))) Keep(SilentFailure::kBehindAnotherFailure);
    return *error;
  }
  Open(path);
  Log(ResumeLine(
      path, static_cast<size_t>(scan.valid_end),
      FramesToMs(static_cast<size_t>(scan.samples / 1024), kSweepRate)));
  return NullReply();
}

bool Narrator::HasWorkingDirectory() {
  const bool known = !HasFailed(Next("getcwd"));
  if (!known) Keep(SilentFailure::kNoWorkingDirectory);
  return known;
}

// All paths are relative, so the directory is asked for each of them: two of
// one name are the same file when both were resolved alike.
Reply Narrator::FinalizePath(const std::string& path) {
  const bool capture = HasWorkingDirectory();
  const bool output = HasWorkingDirectory();
  if (capture != output) {
    return FileError("INVALID_ARGS",
                     "ADTS capture is its own deliverable; outputPath " + path +
                         " must equal capturePath",
                     path);
  }
  uint64_t dropped = 0;
  if (session_.open) {
    const bool alike = HasWorkingDirectory() == capture;
    if (alike && session_.path == path) {
      dropped = dropped_;
      Close("finalizePath");
    }
  }
  return Seal(path, dropped, "finalizePath");
}

Reply Narrator::FinalizeWavOnly(const std::string& path) {
  subject_ = path;
  const SweptCall look = Next("stat");
  int64_t size = look.file_size;
  if (HasFailed(look)) {
    if (look.error != 0) return Told("wav", look);
    Keep(SilentFailure::kStatWithoutErrno);
    size = 0;
  }
  const auto data_bytes =
      static_cast<uint32_t>(std::max<int64_t>(size - kWavHeaderSize, 0));
  const MaybeError error = PatchWav(path, data_bytes);
  if (error) return *error;
  Log(PatchedLine(path, data_bytes));
  return NullReply();
}

Narrator::MaybeError Narrator::PatchWav(const std::string& path,
                                        uint32_t data_bytes) {
  const SweptCall open = Next("fopen");
  if (HasFailed(open)) {
    if (open.error != 0) return Told("wav", open);
    Keep(SilentFailure::kFopenWithoutErrno);
    return std::nullopt;
  }
  MaybeError error;
  for (const char* name : {"fwrite", "fflush", "fsync", "fclose"}) {
    const SweptCall call = Next(name);
    if (HasFailed(call) && error) {
      Keep(SilentFailure::kBehindAnotherFailure);
    } else if (HasFailed(call)) {
      error = Told("wav", call);
    } else if (name == std::string("fwrite")) {
      files_->PatchHeader(
          path, WavHeaderOf({data_bytes + 36, 2, kSweepRate, kSweepRate * 2 * 2,
                             4, data_bytes}));
    }
  }
  return error;
}

}  // namespace corvane_test
