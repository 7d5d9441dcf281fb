// A take that is paused, marked, limited and split: which samples get into
// which file, with the real plugin behind it.
#include <sys/eventfd.h>

#include <gtest/gtest.h>

#include <map>
#include <utility>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"
#include "take/recorder.h"

namespace corvane_test {
namespace {

using corvane::FileDescriptor;
using corvane::Recorder;
using corvane::TakeEnd;
using corvane::TakeOptions;
using corvane::TakeResult;

// Samples that come in the test's own pieces; before a piece is read, whatever
// the test wants happens.
class ScriptedSource : public corvane::AudioSource {
 public:
  explicit ScriptedSource(bool is_live)
      : readable_(is_live ? eventfd(1, EFD_CLOEXEC) : -1) {}

  void Play(Bytes pcm) { pieces_.push_back({std::move(pcm), {}}); }
  void Do(std::function<void()> action) { pieces_.push_back({{}, action}); }

  corvane::PcmFormat format() const override { return {48000, 1}; }
  std::string name() const override { return "script"; }
  std::string how_to_continue() const override { return "-i -"; }
  std::optional<int64_t> total_frames() const override { return std::nullopt; }
  int wait_fd() const override { return readable_.get(); }
  std::string error() const override { return ""; }
  bool has_ended() const override { return pieces_.empty(); }

  size_t Read(uint8_t* out, size_t size) override {
    while (!pieces_.empty() && pieces_.front().pcm.empty()) {
      const auto action = std::exchange(pieces_.front().action, {});
      pieces_.pop_front();
      if (action) action();
    }
    if (pieces_.empty()) return 0;
    Bytes& pcm = pieces_.front().pcm;
    const size_t got = std::min(size, pcm.size());
    std::copy_n(pcm.begin(), got, out);
    pcm.erase(pcm.begin(), pcm.begin() + static_cast<std::ptrdiff_t>(got));
    return got;
  }

 private:
  struct Piece {
    Bytes pcm;
    std::function<void()> action;
  };

  const FileDescriptor readable_;
  std::deque<Piece> pieces_;
};

class TakeControlTest : public ProgramTest {
 protected:
  TakeControlTest() { options_.capture_path = path_; }

  TakeResult Record(ScriptedSource* source) {
    corvane::Engine engine;
    Recorder recorder(&engine, source, options_, {}, nullptr);
    recorder_ = &recorder;
    return recorder.Run();
  }

  void Pause(ScriptedSource* source) {
    source->Do([this] { recorder_->TogglePause(); });
  }
  void Mark(ScriptedSource* source) {
    source->Do([this] { recorder_->Mark(); });
  }

  // What a take of this audio alone is, byte for byte.
  Bytes TakeOf(const Bytes& pcm) {
    ScriptedSource source(false);
    source.Play(pcm);
    TakeOptions options;
    options.capture_path = Path("alone.aac");
    corvane::Engine engine;
    Recorder(&engine, &source, options, {}, nullptr).Run();
    return ReadFile(options.capture_path);
  }

  const std::string path_ = Path("take.aac");
  TakeOptions options_;
  Recorder* recorder_ = nullptr;
};

// Each stretch between two pauses is encoded by itself.
TEST_F(TakeControlTest, WhatALiveSourceBringsDuringAPauseIsPassedOver) {
  const Bytes before = Sine(50000);
  const Bytes after = Noise(30000);
  ScriptedSource source(true);
  source.Play(before);
  Pause(&source);
  source.Play(FullScale(40000));
  Pause(&source);
  source.Play(after);
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.frames, 80000);
  EXPECT_EQ(take.pauses, 1);
  EXPECT_EQ(ReadFile(path_), Concat(TakeOf(before), TakeOf(after)));
  ASSERT_TRUE(take.has_sealed());
  EXPECT_EQ(take.parts[0].sealed->dropped_append_bytes, 0)
      << "nothing is appended while a take is paused";
}

// The pipe delivers half a sample before the pause, the other half within it.
TEST_F(TakeControlTest, APauseKeepsSamplesWhole) {
  const Bytes before = Sine(20000);
  const Bytes after = Noise(20000);
  ScriptedSource source(true);
  source.Play(Concat(before, {0x12}));
  Pause(&source);
  source.Play(Concat({0x34}, FullScale(1000)));
  source.Play({0x56});
  Pause(&source);
  source.Play(Concat({0x78}, after));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.leftover_bytes, 0);
  EXPECT_EQ(ReadFile(path_),
            Concat(TakeOf(before), TakeOf(Concat({0x56, 0x78}, after))));
}

TEST_F(TakeControlTest, AFileWaitsDuringAPause) {
  const Bytes pcm = Sine(400000);
  ScriptedSource source(false);
  source.Play(Slice(pcm, 0, 200000));
  source.Do([this] {
    recorder_->TogglePause();
    g_timeout_add(
        50,
        [](gpointer recorder) {
          static_cast<Recorder*>(recorder)->TogglePause();
          return G_SOURCE_REMOVE;
        },
        recorder_);
  });
  source.Play(Slice(pcm, 200000));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.frames, 400000) << "nothing of a file is passed over";
  EXPECT_EQ(take.pauses, 1);
  EXPECT_GE(take.wall_us, 50000);
}

TEST_F(TakeControlTest, ATakeThatIsStoppedDuringAPauseIsSealed) {
  ScriptedSource source(true);
  source.Play(Sine(48000));
  Pause(&source);
  source.Play(Sine(48000));
  source.Do([this] { recorder_->Stop(TakeEnd::kKey); });
  source.Play(Sine(48000));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.end, TakeEnd::kKey);
  EXPECT_EQ(take.frames, 48000);
  EXPECT_TRUE(take.has_sealed());
}

TEST_F(TakeControlTest, NothingIsPausedOrMarkedBeforeTheTakeHasBegun) {
  ScriptedSource source(true);
  source.Do([this] {
    EXPECT_FALSE(recorder_->TogglePause());
    EXPECT_FALSE(recorder_->Mark());
  });
  source.Play(Sine(4800));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.frames, 4800);
  EXPECT_EQ(take.marks, std::vector<int64_t>());
}

TEST_F(TakeControlTest, MarksCountNoPausedTime) {
  ScriptedSource source(true);
  source.Play(Silence(48000));
  Mark(&source);
  Pause(&source);
  source.Play(Silence(96000));
  Mark(&source);
  Pause(&source);
  source.Play(Silence(24000));
  Mark(&source);
  source.Play(Silence(4800));
  EXPECT_EQ(Record(&source).marks, (std::vector<int64_t>{1000, 1000, 1500}));
}

// A player shows the time from the file's beginning.
TEST_F(TakeControlTest, MarksOfAResumedTakeCountWhatItKept) {
  WriteFile(path_, TakeOf(Silence(48000)));
  options_.kept = corvane::KeptAudio{1024, FileSize(path_), 0, 48000};
  ScriptedSource source(true);
  source.Play(Silence(24000));
  Mark(&source);
  source.Play(Silence(4800));
  EXPECT_EQ(Record(&source).marks, std::vector<int64_t>{1524});
}

TEST_F(TakeControlTest, ATakeEndsAtItsDurationInSamples) {
  const Bytes pcm = Sine(100000);
  options_.feed.take_frames = 70001;
  ScriptedSource source(true);
  source.Play(pcm);
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.end, TakeEnd::kDuration);
  EXPECT_EQ(take.frames, 70001);
  EXPECT_EQ(ReadFile(path_), TakeOf(Slice(pcm, 0, 70001 * 2)));
}

TEST_F(TakeControlTest, PausedTimeIsNoneOfTheDuration) {
  options_.feed.take_frames = 48000;
  ScriptedSource source(true);
  source.Play(Sine(24000));
  Pause(&source);
  source.Play(Sine(48000));
  Pause(&source);
  source.Play(Sine(48000));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.end, TakeEnd::kDuration);
  EXPECT_EQ(take.frames, 48000);
}

class SplitTest : public TakeControlTest {
 protected:
  static constexpr int64_t kPartFrames = 40 * 1024;

  SplitTest() { options_.feed.part_frames = kPartFrames; }

  std::string Part(int number) const {
    return corvane::part_path(path_, number);
  }
  static Bytes AudioOf(const Bytes& pcm, size_t number, size_t count = 1) {
    return Slice(pcm, (number - 1) * kPartFrames * 2, count * kPartFrames * 2);
  }
};

TEST_F(SplitTest, EachPartIsTheInputsOwnStretchToTheSample) {
  const Bytes pcm = Noise(100000);
  ScriptedSource source(true);
  source.Play(pcm);
  const TakeResult take = Record(&source);

  ASSERT_EQ(take.parts.size(), 3U);
  int64_t frames = 0;
  for (int number = 1; number <= 3; ++number) {
    const corvane::PartResult& part =
        take.parts[static_cast<size_t>(number) - 1];
    EXPECT_EQ(part.path, Part(number));
    ASSERT_TRUE(part.sealed);
    EXPECT_EQ(ReadFile(part.path),
              TakeOf(AudioOf(pcm, static_cast<size_t>(number))))
        << "part " << number;
    frames += part.frames;
  }
  EXPECT_EQ(frames, 100000);
  EXPECT_EQ(take.frames, 100000);
  EXPECT_FALSE(Exists(path_));
}

// An empty file behind the last would be no capture.
TEST_F(SplitTest, NoPartBeginsWhereTheAudioEnds) {
  ScriptedSource source(true);
  source.Play(Sine(2 * kPartFrames));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.parts.size(), 2U);
  EXPECT_FALSE(Exists(Part(3)));
}

TEST_F(SplitTest, APauseAcrossAJointLosesNothingOfWhatIsRecorded) {
  const Bytes pcm = Sine(60000);
  ScriptedSource source(true);
  source.Play(Slice(pcm, 0, kPartFrames * 2));
  Pause(&source);
  source.Play(FullScale(48000));
  Pause(&source);
  source.Play(Slice(pcm, kPartFrames * 2));
  const TakeResult take = Record(&source);

  ASSERT_EQ(take.parts.size(), 2U);
  EXPECT_EQ(take.frames, 60000);
  EXPECT_EQ(ReadFile(Part(1)), TakeOf(AudioOf(pcm, 1)));
  EXPECT_EQ(ReadFile(Part(2)), TakeOf(AudioOf(pcm, 2)));
}

TEST_F(SplitTest, WhatIsInAPartsWayIsMovedAside) {
  WriteFile(Part(2), {1, 2, 3});
  ScriptedSource source(true);
  source.Play(Sine(50000));
  Record(&source);

  size_t old_files = 0;
  for (const std::string& name : ListDir(Path(""))) {
    if (ReadFile(Path(name)) == Bytes{1, 2, 3}) ++old_files;
  }
  EXPECT_EQ(old_files, 1U);
  EXPECT_EQ(SplitFrames(ReadFile(Part(2))).size(), 10U);
}

TEST_F(SplitTest, ANumberThatIsAnothersIsLeftOut) {
  const Bytes pcm = Sine(50000);
  corvane::CaptureLock rival;
  WriteFile(Part(2), {1, 2, 3});
  ASSERT_FALSE(rival.Take(Part(2)));
  ScriptedSource source(true);
  source.Play(pcm);
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.end, TakeEnd::kInput);
  ASSERT_EQ(take.parts.size(), 2U);
  EXPECT_EQ(take.parts[1].path, Part(3));
  EXPECT_EQ(take.next_path, Part(4));
  EXPECT_EQ(ReadFile(Part(1)), TakeOf(AudioOf(pcm, 1)));
  EXPECT_EQ(ReadFile(Part(3)), TakeOf(AudioOf(pcm, 2)));
  EXPECT_EQ(ReadFile(Part(2)), (Bytes{1, 2, 3})) << "the rival's is untouched";
}

TEST_F(SplitTest, TheFirstNumberIsNobodyElses) {
  corvane::CaptureLock rival;
  WriteFile(Part(1), {1, 2, 3});
  ASSERT_FALSE(rival.Take(Part(1)));
  ScriptedSource source(true);
  source.Play(Sine(50000));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.end, TakeEnd::kHeld);
  ASSERT_EQ(take.parts.size(), 1U);
  EXPECT_TRUE(take.parts[0].holder);
}

TEST_F(SplitTest, WhereNoOtherFileCanBeMadeTheOpenOneGoesOn) {
  const Bytes pcm = Sine(100000);
  const std::string folder = Path("folder");
  ASSERT_EQ(mkdir(folder.c_str(), 0700), 0);
  options_.capture_path = folder + "/take.aac";
  ScriptedSource source(true);
  source.Play(Slice(pcm, 0, 60000));
  source.Do(
      [&] { ASSERT_EQ(rename(folder.c_str(), Path("elsewhere").c_str()), 0); });
  source.Play(Slice(pcm, 60000));
  const TakeResult take = Record(&source);

  EXPECT_EQ(take.missed_splits, 2);
  ASSERT_EQ(take.parts.size(), 1U);
  EXPECT_EQ(take.parts[0].moved_to, Path("elsewhere/take-001.aac"));
  EXPECT_EQ(take.parts[0].frames, 100000);
  EXPECT_EQ(ReadFile(Path("elsewhere/take-001.aac")), TakeOf(pcm));
}

// A device, whose buffer holds whole sample frames, is no liar then.
TEST_F(TakeControlTest, WhatWasReadForATakeThatNeverBeganIsNoLeftover) {
  options_.capture_path = Path("nowhere/take.aac");
  ScriptedSource source(true);
  source.Play(Sine(9000));
  const TakeResult take = Record(&source);

  EXPECT_TRUE(take.error);
  EXPECT_EQ(take.leftover_bytes, 0);
}

TEST_F(SplitTest, APartThatWasMovedIsSealedWhereItIs) {
  const Bytes pcm = Sine(50000);
  ScriptedSource source(true);
  source.Play(Slice(pcm, 0, 60000));
  source.Do([this] {
    ASSERT_EQ(rename(Part(1).c_str(), Path("moved.aac").c_str()), 0);
  });
  source.Play(Slice(pcm, 60000));
  const TakeResult take = Record(&source);

  ASSERT_EQ(take.parts.size(), 2U);
  EXPECT_EQ(take.parts[0].moved_to, Path("moved.aac"));
  ASSERT_TRUE(take.parts[0].sealed);
  EXPECT_EQ(ReadFile(Path("moved.aac")), TakeOf(AudioOf(pcm, 1)));
  EXPECT_EQ(ReadFile(Part(2)), TakeOf(AudioOf(pcm, 2)));
}

TEST(PartPathTest, TheNumberGoesBeforeTheExtension) {
  const std::map<std::pair<std::string, int>, std::string> expected = {
      {{"take.aac", 1}, "take-001.aac"},
      {{"a.b/take.x.aac", 12}, "a.b/take.x-012.aac"},
      {{"/tmp/take", 999}, "/tmp/take-999"},
      {{"take.aac", 1000}, "take-1000.aac"},
      {{".hidden", 1}, ".hidden-001"},
  };
  for (const auto& [given, path] : expected) {
    EXPECT_EQ(corvane::part_path(given.first, given.second), path);
  }
}

}  // namespace
}  // namespace corvane_test
