// The methods of a recording; the recovery is in sweep_narrator_recovery.cc.
#include "faults/sweep_narrator.h"

#include <cstring>
#include <utility>

#include "faults/sweep_promises.h"

namespace corvane_test {

Narrator::Narrator(SweptCalls calls, SweptFiles* files,
                   SilentFailureCount* silences)
    : calls_(std::move(calls)), files_(files), silences_(silences) {}

SweptCall Narrator::Next(const char* name) {
  if (!IsNext(name)) {
    throw WentAstray(std::string(name) + " is due, and " +
                     (at_ < calls_.size() ? calls_[at_].name : "nothing") +
                     " was called");
  }
  const SweptCall& call = calls_[at_++];
  untold_ += HasFailed(call) ? 1 : 0;
  return call;
}

bool Narrator::IsNext(const char* name) const {
  return at_ < calls_.size() && strcmp(calls_[at_].name, name) == 0;
}

Reply Narrator::Told(const char* during, const SweptCall& call) {
  --untold_;
  return Promised(during, call, subject_);
}

Narrator::MaybeError Narrator::ToldOfCodec(const SweptCall& call) {
  --untold_;
  return PromisedOfCodec(call, subject_);
}

void Narrator::Keep(SilentFailure silence) {
  --untold_;
  ++(*silences_)[silence];
}

void Narrator::End() const {
  if (at_ < calls_.size()) {
    throw WentAstray(std::string(calls_[at_].name) + " is called out of turn");
  }
}

void Narrator::Step(const SweepStep& step) {
  if (step.what == SweepDo::kAwait) return;
  if (step.what == SweepDo::kLitter) {
    if (files_->Has(step.path)) files_->Append(step.path, LitterOf(step));
    return;
  }
  quiet_ = false;
  untold_ = 0;
  const Reply reply = Answer(step);
  if (reply.kind == Reply::Kind::kError && !quiet_) {
    Log(Failed(MethodOf(step), reply));
  }
  lines_.push_back({false, corvane_test::Answer(MethodOf(step), reply)});
  if (untold_ != 0) {
    throw WentAstray(std::string("a failure during ") + MethodOf(step) +
                     " would go untold");
  }
}

Reply Narrator::Answer(const SweepStep& step) {
  subject_ = session_.path;
  switch (step.what) {
    case SweepDo::kStart:
      return Start(step.path);
    case SweepDo::kAppend:
      return Append(static_cast<size_t>(step.count));
    case SweepDo::kPause:
      return Pause();
    case SweepDo::kResume:
      session_.paused = false;
      return NullReply();
    case SweepDo::kStop:
      return Stop();
    case SweepDo::kCancel:
      Close("cancel");
      return NullReply();
    case SweepDo::kFlush:
      return Flush();
    case SweepDo::kResumePath:
      return ResumePath(step.path);
    case SweepDo::kFinalizePath:
      return FinalizePath(step.path);
    default:
      return FinalizeWavOnly(step.path);
  }
}

Reply Narrator::Start(const std::string& path) {
  Close("start over an open session");
  subject_ = path;
  const SweptCall look = Next("stat");
  bool may_lose = false;
  if (HasFailed(look)) {
    may_lose = look.error != ENOENT;
    if (may_lose) {
      Keep(SilentFailure::kStatMeansNothingThere);
    } else {
      --untold_;  // it says the truth
    }
  } else if (look.file_size > 0) {
    const MaybeError error = Preserve(path, &may_lose);
    if (error) return *error;
  }
  const SweptCall open = Next("open");
  if (HasFailed(open)) return Told("start", open);
  files_->Create(path, may_lose);
  Open(path);
  Log(StartLine(path, kSweepRate, 1));
  return NullReply();
}

Narrator::MaybeError Narrator::Preserve(const std::string& path,
                                        bool* may_replace) {
  const std::string stem = path.substr(0, path.rfind('.')) + ".orphan";
  const Reply not_preserved = FileError(
      "WRITE_FAILED", "existing audio at target could not be preserved", path);
  std::string slot = stem + ".aac";
  int number = 0;
  while (IsTaken(slot, may_replace)) {
    if (++number == 100) {
      Log(Error("no free orphan slot for " + path));
      return not_preserved;
    }
    slot = stem + std::to_string(number) + ".aac";
  }
  const SweptCall move = Next("rename");
  if (HasFailed(move)) {
    --untold_;
    Log(Error("could not preserve orphan audio " + path + ": " +
              strerror(move.error)));
    return not_preserved;
  }
  files_->Move(path, slot, std::exchange(*may_replace, false));
  Log(Warning("preserved orphan audio " + path + " as " + slot));
  return std::nullopt;
}

bool Narrator::IsTaken(const std::string& slot, bool* may_replace) {
  const SweptCall look = Next("stat");
  if (look.path != slot) throw WentAstray("not the next slot: " + look.path);
  if (!HasFailed(look)) return true;
  if (look.error == 0) {
    Keep(SilentFailure::kStatWithoutErrno);
    return true;
  }
  *may_replace = look.error != ENOENT;
  if (*may_replace) {
    Keep(SilentFailure::kStatMeansNothingThere);
  } else {
    --untold_;
  }
  return false;
}

void Narrator::Open(const std::string& path) {
  session_ = {};
  session_.open = true;
  session_.path = path;
  dropped_ = 0;
  append_failure_reported_ = false;
}

void Narrator::Close(const std::string& reason) {
  if (!session_.open) return;
  subject_ = session_.path;
  const auto warn = [&](const char* what, const std::string& text) {
    Log(Warning(std::string(what) + " on " + reason + " failed for " +
                session_.path + ": " + text));
  };
  const MaybeError drain = Finish();
  if (drain) warn("codec drain", drain->message);
  for (const auto& [name, what] :
       {std::pair("fsync", "sync"), std::pair("close", "close")}) {
    const SweptCall call = Next(name);
    if (HasFailed(call)) {
      --untold_;
      warn(what, strerror(call.error));
    }
  }
  Log(ClosedLine(reason, session_.path, static_cast<size_t>(session_.frames)));
  session_ = {};
}

void Narrator::Dispose() { Close("plugin dispose"); }

Reply Narrator::Pause() {
  if (!session_.open) return NullReply();
  session_.paused = true;
  const MaybeError error = Finish();
  if (error) {
    Log(Warning("pause drain failed for " + session_.path + ": " +
                error->message));
  }
  return NullReply();
}

Reply Narrator::Stop() {
  if (!session_.open) {
    return PlainError("NOT_RECORDING", "stop with no open recording");
  }
  const std::string path = session_.path;
  const uint64_t dropped = dropped_;
  Close("stop");
  return Seal(path, dropped, "stop");
}

Reply Narrator::Flush() {
  if (!session_.open) return NullReply();
  const SweptCall sync = Next("fsync");
  return HasFailed(sync) ? Told("flush", sync) : NullReply();
}

}  // namespace corvane_test
