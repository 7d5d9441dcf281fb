// The power goes while a take is under way: every state that the disk may be
// found in is recovered, and no frame that can be found is lost.
#include <unistd.h>

#include <iostream>
#include <set>

#include "crash/disk_model.h"
#include "crash/kill_fixture.h"
#include "looks/capture_look.h"
#include "support/adts_frames.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr int kRandomPerPrefix = 4;
// What is recorded behind each recovery: one frame and the priming.
const Steps kAfterwards = {"append=100", "stop"};

bool StartsWith(const Bytes& whole, const Bytes& front) {
  return Slice(whole, 0, front.size()) == front;
}

class PowerCutTest : public KillTest {
 protected:
  // Records the take on top of a durable `old` file (none where it is empty)
  // and recovers every state that a power cut may leave.
  void CutEverywhere(const Steps& steps, const Bytes& old = {},
                     int channels = 1) {
    take_ = {Path("take.aac"), 48000, channels, steps};
    if (!old.empty()) WriteFile(take_.path, old);
    const std::vector<DiskOp> ops = RecordTake();
    later_ = Uninterrupted({"",
                            take_.rate,
                            take_.channels,
                            {"start", kAfterwards[0], kAfterwards[1]}});
    Disk disk;
    if (!old.empty()) disk.files[take_.path] = Durable(old);
    Recover(disk);
    size_t answered = 0;
    for (size_t i = 0; i < ops.size(); ++i) {
      disk.Apply(ops[i]);
      for (; answered < steps.size() && ends_[answered] <= i + 1; ++answered) {
        ExpectDurable(disk, steps[answered]);
      }
      Recover(disk);
    }
    EXPECT_EQ(answered, steps.size());
    std::cout << "  " << ops.size() << " changes and syncs, " << seen_.size()
              << " different files recovered" << std::endl;
  }

  // What the take does to the disk; sets `ends_`.
  std::vector<DiskOp> RecordTake() {
    const DiskRecorder recorder;
    TakeRunner runner(take_, [this](const char* method, const Value& args) {
      return Call(method, args);
    });
    ends_.clear();
    for (const std::string& step : take_.steps) {
      runner.Run(step);
      ends_.push_back(recorder.ops().size());
    }
    TakeTranscript();
    return recorder.ops();
  }

  // Once a flush is answered, nothing waits for a sync; nor does it, ever, in a
  // file that is closed.
  void ExpectDurable(const Disk& disk, const std::string& step) const {
    const bool is_synced = step == "flush" || step == "stop" ||
                           step == "cancel" || step == "finalizePath";
    for (const auto& [path, file] : disk.files) {
      const bool may_wait = path == take_.path && !is_synced;
      EXPECT_TRUE(may_wait || file.pending.empty())
          << path << " behind the answer to " << step;
    }
  }

  static File Durable(const Bytes& content) {
    return {content, {}, true, static_cast<int64_t>(content.size())};
  }

  // All states of the disk, with the last rename done or not done.
  void Recover(const Disk& disk) {
    for (const auto* files : {&disk.files, &disk.without_rename}) {
      for (const auto& [path, file] : *files) RecoverFile(path, file);
    }
  }

  // A file without a durable name may be missing, which leaves nothing to
  // recover and nothing that was synced.
  void RecoverFile(const std::string& path, const File& file) {
    EXPECT_TRUE(file.has_durable_name || file.durable.empty()) << path;
    const Bytes synced =
        Slice(file.durable, 0, NaiveScan(file.durable).stream_end);
    ForEachFates(
        file.pending, kRandomPerPrefix, &chance_, [&](const Fates& fates) {
          const Bytes found = file.After(fates);
          if (HasFailure() || !seen_.insert(found).second) return;
          EXPECT_TRUE(StartsWith(found, synced));
          const Bytes whole = Slice(found, 0, NaiveScan(found).stream_end);
          FinalizeFound(found, whole, synced);
          ResumeFound(found, whole, synced);
          if (HasFailure()) Report(path, found);
        });
  }

  // Cut is only what stands behind the last whole frame that can be reached.
  void FinalizeFound(const Bytes& found, const Bytes& whole,
                     const Bytes& synced) {
    const adts::Scan scan = NaiveScan(whole);
    WriteFile(take_.path, found);
    // Nor has the program anything against it.
    EXPECT_EQ(corvane::look_at_capture(take_.path, false).objection, "");
    ExpectSealed(whole, scan);
    EXPECT_TRUE(StartsWith(whole, synced));
    ExpectSealed(whole, scan);
  }

  void ResumeFound(const Bytes& found, const Bytes& whole,
                   const Bytes& synced) {
    WriteFile(take_.path, found);
    RunTake({take_.path,
             take_.rate,
             take_.channels,
             {"resumePath", kAfterwards[0], kAfterwards[1]}});
    EXPECT_TRUE(StartsWith(ReadFile(take_.path), synced));
    const Bytes longer = Concat(whole, later_);
    ExpectSealed(longer, NaiveScan(longer));
  }

  // "finalizePath" finds `content` in the file and changes nothing, or leaves
  // it; the scan is of that content.
  void ExpectSealed(const Bytes& content, const adts::Scan& scan) {
    const auto size = static_cast<int64_t>(content.size());
    const Reply reply =
        Call("finalizePath", CaptureArgs(take_.path, take_.rate, take_.channels)
                                 .With("outputPath", take_.path));
    TakeTranscript();
    EXPECT_EQ(reply, scan.samples > 0
                         ? Figures(take_.path, scan.DurationMs(), size)
                         : FileError("VERIFY_FAILED",
                                     "capture holds no complete AAC frame (" +
                                         std::to_string(size) + " bytes)",
                                     take_.path));
    EXPECT_TRUE(ReadFile(take_.path) == content);
  }

  // The file that failed is kept for whoever looks into it.
  void Report(const std::string& path, const Bytes& found) {
    const std::string copy = testing::TempDir() + "corvane-power-cut.aac";
    WriteFile(copy, found);
    ADD_FAILURE() << found.size() << " bytes found at " << path << " are in "
                  << copy;
  }

  Take take_;
  std::vector<size_t> ends_;  // changes behind each step of the take
  Bytes later_;
  std::set<Bytes> seen_;
  Chance chance_{1};
};

TEST_F(PowerCutTest, FourUnsyncedFramesInAllTheirFates) {
  CutEverywhere({"start", "append=5200"});
}

TEST_F(PowerCutTest, AResumedTakeWhoseCutIsNotSynced) {
  const Bytes whole =
      Uninterrupted({"", 48000, 1, {"start", "append=3000", "stop"}});
  CutEverywhere({"resumePath", "append=4096"},
                Concat(whole, Slice(whole, 0, 60)));
}

TEST_F(PowerCutTest, AStartOverAudioWhoseRenameIsNotSynced) {
  const Bytes whole =
      Uninterrupted({"", 48000, 1, {"start", "append=3000", "stop"}});
  CutEverywhere({"start", "append=3100"}, whole);
}

TEST_F(PowerCutTest, ALongTakeWithFlushAndPause) {
  CutEverywhere({"start", "append=7200", "flush", "append=5200", "pause",
                 "resume", "append=2100", "stop"});
}

TEST_F(PowerCutTest, ATornStereoTakeThatIsFinalized) {
  const Bytes whole =
      Uninterrupted({"", 48000, 2, {"start", "append=2100", "stop"}});
  CutEverywhere({"finalizePath"}, Concat(whole, Slice(whole, 0, 300)), 2);
}

TEST_F(PowerCutTest, AStereoTakeResumedFlushedAndCancelled) {
  const Bytes whole =
      Uninterrupted({"", 48000, 2, {"start", "append=2100", "stop"}});
  CutEverywhere({"resumePath", "append=3072", "flush", "append=10", "cancel"},
                Concat(whole, Slice(whole, 0, 300)), 2);
}

TEST_F(PowerCutTest, TwoTakesOneOverTheOther) {
  CutEverywhere({"start", "append=4000", "start", "append=6000", "resumePath",
                 "append=2100", "stop"});
}

}  // namespace
}  // namespace corvane_test
