// Captures that a crash, a disk or a hand has damaged are taken for captures.
#include <algorithm>
#include <random>

#include "audio/file_kind.h"
#include "host/foreign_places.h"
#include "host/record_fixture.h"
#include "looks/capture_look.h"
#include "support/adts_frames.h"
#include "support/chance.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr size_t kBlock = 4096;  // what a disk loses at a time

class DamagedCaptureTest : public ProgramTest {
 protected:
  // A capture of two seconds, some 16 kB.
  Bytes RecordNoise() {
    const ChildResult run = Corvane(
        {"record", Path("take.aac"), "-i", MakeWav("in.wav", Noise(96000))});
    EXPECT_EQ(run.status, 0) << run.err;
    return ReadFile(Path("take.aac"));
  }

  // Both looks take what the plugin finds a frame in, but where its first bytes
  // have come to name another kind of file.
  void ExpectTaken(const Bytes& damaged, const std::string& how) {
    WriteFile(path_, damaged);
    ExpectForeignPlaces(path_, damaged, how);
    const std::string kind = corvane::kind_of(Slice(damaged, 0, 262));
    if (damaged.empty() || !(kind.empty() || kind == "ADTS")) return;
    const corvane::CaptureLook look = corvane::look_at_capture(path_, false);
    const adts::Scan scan = NaiveScan(damaged);
    EXPECT_EQ(look.error.empty(), scan.samples > 0 || look.torn_bytes() > 0)
        << how << ": " << look.error;
    EXPECT_EQ(look.objection, "") << how;
    if (scan.samples > 0) ++taken_;
  }

  Bytes RandomBytes(size_t size) {
    Bytes bytes(size);
    std::generate(bytes.begin(), bytes.end(),
                  [this] { return static_cast<uint8_t>(random_()); });
    return bytes;
  }

  size_t Below(size_t limit) { return random_() % limit; }

  void Overwrite(size_t at, const Bytes& with, Bytes* file) const {
    const size_t size = std::min(with.size(), file->size() - at);
    std::copy_n(with.begin(), size, file->begin() + static_cast<ptrdiff_t>(at));
  }

  void DamageAtRandom(Bytes* file) {
    const size_t at = Below(file->size());
    const Bytes before = Slice(*file, 0, at);
    const size_t length = Below(300);
    switch (Below(6)) {
      case 0:
        (*file)[at] ^= static_cast<uint8_t>(1 << Below(8));
        break;
      case 1:
        *file = before;
        break;
      case 2:
        *file = Concat(Concat(before, RandomBytes(length)), Slice(*file, at));
        break;
      case 3:
        *file = Concat(before, Slice(*file, at + length));
        break;
      case 4:
        *file = Concat(Slice(*file, 0, at + length), Slice(*file, at));
        break;
      default:
        Overwrite(at, Bytes(Below(kBlock), 0), file);
    }
  }

  const std::string path_ = Path("damaged.aac");
  std::mt19937 random_{TestSeed()};
  size_t taken_ = 0;
};

TEST_F(DamagedCaptureTest, CutAnywhere) {
  const Bytes whole = RecordNoise();
  for (size_t size = 1; size < whole.size(); size += size < 200 ? 1 : 97) {
    ExpectTaken(Slice(whole, 0, size), "cut to " + std::to_string(size));
  }
  EXPECT_GT(taken_, 150U);
}

TEST_F(DamagedCaptureTest, FewFramesInAnyOrderWithZeros) {
  const std::vector<Bytes> frames = SplitFrames(RecordNoise());
  for (int pattern = 0; pattern < 64; ++pattern) {
    Bytes file;
    for (size_t i = 0; i < 6; ++i) {
      const bool is_there = (pattern >> i & 1) != 0;
      file = Concat(file, is_there ? frames[i] : Bytes(frames[i].size(), 0));
    }
    ExpectTaken(file, "pattern " + std::to_string(pattern));
  }
  EXPECT_GT(taken_, 30U);
}

TEST_F(DamagedCaptureTest, ItsFrontLostToZerosOrGarbage) {
  const Bytes whole = RecordNoise();
  for (size_t lost = 1; lost < whole.size() - kBlock; lost += 173) {
    Bytes file = whole;
    Overwrite(0, Bytes(lost, 0), &file);
    ExpectTaken(file, "zeros to " + std::to_string(lost));
    Overwrite(0, RandomBytes(lost), &file);
    ExpectTaken(file, "garbage to " + std::to_string(lost));
  }
  EXPECT_GT(taken_, 60U);
}

TEST_F(DamagedCaptureTest, AnyBlockLostToZerosOrGarbage) {
  const Bytes whole = RecordNoise();
  for (size_t at = 0; at < whole.size(); at += 500) {
    Bytes file = whole;
    Overwrite(at, Bytes(kBlock, 0), &file);
    ExpectTaken(file, "zeros at " + std::to_string(at));
    Overwrite(at, RandomBytes(kBlock), &file);
    ExpectTaken(file, "garbage at " + std::to_string(at));
  }
  EXPECT_GT(taken_, 50U);
}

TEST_F(DamagedCaptureTest, BlocksOfGarbageOrZerosBehindTheEnd) {
  const Bytes whole = RecordNoise();
  for (size_t blocks = 1; blocks <= 64; blocks *= 4) {
    ExpectTaken(Concat(whole, Bytes(blocks * kBlock, 0)), "zeros");
    ExpectTaken(Concat(whole, RandomBytes(blocks * kBlock)), "garbage");
  }
  EXPECT_EQ(taken_, 8U);
}

TEST_F(DamagedCaptureTest, DamagedAtRandom) {
  const Bytes whole = RecordNoise();
  for (int run = 0; run < 500; ++run) {
    Bytes file = whole;
    for (size_t left = Below(4) + 1; left > 0 && !file.empty(); --left) {
      DamageAtRandom(&file);
    }
    ExpectTaken(file, "seed " + std::to_string(TestSeed()) + ", run " +
                          std::to_string(run));
  }
  EXPECT_GT(taken_, 350U);
}

}  // namespace
}  // namespace corvane_test
