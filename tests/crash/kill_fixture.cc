#include "crash/kill_fixture.h"

#include <unistd.h>

#include <csignal>

#include "crash/journal.h"
#include "host/child_process.h"
#include "support/adts_frames.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr int64_t kSamplesPerFrame = 1024;
// Below this the encoder holds everything, and the formula says nothing.
constexpr int64_t kFormulaFrom = 2048;

// What is recorded behind a recovery.
const Steps kLater = {"append=3000", "append=500", "stop"};

Take With(Take take, const std::string& first, const Steps& more) {
  take.steps = {first};
  take.steps.insert(take.steps.end(), more.begin(), more.end());
  return take;
}

}  // namespace

std::optional<Loss> LossOf(const Remains& remains, const Bytes& file,
                           size_t old_size) {
  if (!remains.in_segment || remains.fed < kFormulaFrom) return std::nullopt;
  const Bytes segment = Slice(file, old_size + remains.segment_at);
  const int64_t written = NaiveScan(segment).samples / kSamplesPerFrame;
  return Loss{remains.fed - kSamplesPerFrame * (written - 1),
              kFormulaFrom + remains.fed % kSamplesPerFrame};
}

Remains KillTest::Kill(const Take& take, const StopPoint& point, int steps) {
  const std::string journal_path = Path("journal");
  unlink(journal_path.c_str());
  JournalFile journal(journal_path);
  Child child(RecorderCommand(journal_path, take, point), {});
  std::string sign = kStopped;
  if (point.step < 0) {
    sign.clear();
    for (int i = 0; i < steps; ++i) sign += kStepDone;
  }
  child.AwaitError(sign);
  child.Signal(SIGKILL);
  EXPECT_EQ(child.Wait().status, -1) << "the recorder ended by itself";
  return {Bytes(journal->data, journal->data + journal->size), journal->writing,
          journal->in_segment, journal->segment_at,
          static_cast<int64_t>(journal->fed)};
}

void KillTest::RunTake(const Take& take) {
  TakeRunner(take, [this](const char* method, const Value& args) {
    return Call(method, args);
  }).RunAll();
  TakeTranscript();
}

Bytes KillTest::Uninterrupted(Take take, const Bytes& old) {
  take.path = Path("uninterrupted.aac");
  WriteFile(take.path, old);
  RunTake(take);
  Bytes file = ReadFile(take.path);
  unlink(take.path.c_str());
  return file;
}

void KillTest::ResumeAndHold(const Take& take, const Bytes& whole) {
  const Bytes later = Uninterrupted(With(take, "start", kLater));
  RunTake(With(take, "resumePath", kLater));
  EXPECT_TRUE(ReadFile(take.path) == Concat(whole, later));
}

void KillTest::FinalizeAndHold(const Take& take, const Bytes& whole) {
  const Reply reply =
      Call("finalizePath", Value::Map({{"capturePath", take.path},
                                       {"outputPath", take.path},
                                       {"sampleRate", take.rate},
                                       {"channels", take.channels}}));
  TakeTranscript();
  const int64_t frames = NaiveScan(whole).samples / kSamplesPerFrame;
  const auto bytes = static_cast<int64_t>(whole.size());
  EXPECT_EQ(reply,
            frames > 0
                ? Figures(take.path, FramesToMs(frames, take.rate), bytes)
                : FileError("VERIFY_FAILED",
                            "capture holds no complete AAC frame (0 bytes)",
                            take.path));
  EXPECT_TRUE(ReadFile(take.path) == whole);
}

void KillTest::StartAndHold(const Take& take, const Bytes& left) {
  const Take again = With(take, "start", kLater);
  const Bytes later = Uninterrupted(again);
  RunTake(again);
  EXPECT_TRUE(ReadFile(take.path) == later);
  const std::string orphan =
      take.path.substr(0, take.path.rfind('.')) + ".orphan.aac";
  ASSERT_EQ(Exists(orphan), !left.empty());
  EXPECT_TRUE(left.empty() || ReadFile(orphan) == left);
}

void KillTest::Recover(const std::string& method, const Take& take,
                       const Bytes& left, const Bytes& whole) {
  if (method == "resumePath") {
    ResumeAndHold(take, whole);
  } else if (method == "finalizePath") {
    FinalizeAndHold(take, whole);
  } else {
    StartAndHold(take, left);
  }
}

Bytes WholePart(const Bytes& file, const Bytes& reference) {
  size_t end = 0;
  for (const Bytes& frame : SplitFrames(reference)) {
    if (end + frame.size() > file.size()) break;
    end += frame.size();
  }
  return Slice(file, 0, end);
}

}  // namespace corvane_test
