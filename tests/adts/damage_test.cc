// Captures, damaged at random, scan as the naive scanner says.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "pieces.h"

namespace corvane_test {
namespace {

// Set CORVANE_TEST_SEED to repeat a run.
unsigned Seed() {
  const char* const wanted = getenv("CORVANE_TEST_SEED");
  return wanted != nullptr ? static_cast<unsigned>(std::stoul(wanted))
                           : std::random_device()();
}

class Damage : public testing::Test {
 protected:
  Damage() : seed_(Seed()), random_(seed_) {
    printf("CORVANE_TEST_SEED=%u\n", seed_);
  }

  // 0 to limit - 1.
  int Below(size_t limit) { return static_cast<int>(random_() % limit); }

  // A range of at most `longest` bytes inside the file.
  std::pair<int, int> Range(const Bytes& file, size_t longest) {
    const int from = Below(file.size() + 1);
    return {from, from + Below(std::min(longest, file.size() - from) + 1)};
  }

  void FlipBits(Bytes* file) {
    for (int n = 1 + Below(8); n > 0 && !file->empty(); --n) {
      (*file)[Below(file->size())] ^= 1 << Below(8);
    }
  }
  void CutTheEnd(Bytes* file) { file->resize(Below(file->size() + 1)); }
  void InsertNoise(Bytes* file) {
    Bytes noise(Below(300));
    std::generate(noise.begin(), noise.end(), [this] { return Below(256); });
    file->insert(file->begin() + Below(file->size() + 1), noise.begin(),
                 noise.end());
  }
  void Delete(Bytes* file) {
    const auto [from, to] = Range(*file, 300);
    file->erase(file->begin() + from, file->begin() + to);
  }
  void Duplicate(Bytes* file) {
    const auto [from, to] = Range(*file, 2000);
    const Bytes copy(file->begin() + from, file->begin() + to);
    file->insert(file->begin() + Below(file->size() + 1), copy.begin(),
                 copy.end());
  }
  void Zero(Bytes* file) {  // what a crash leaves of pages never written
    const auto [from, to] = Range(*file, 4096);
    std::fill(file->begin() + from, file->begin() + to, 0);
  }

  Bytes Damaged(Bytes file) {
    for (int n = 1 + Below(4); n > 0; --n) {
      switch (Below(6)) {
        case 0:
          FlipBits(&file);
          break;
        case 1:
          CutTheEnd(&file);
          break;
        case 2:
          InsertNoise(&file);
          break;
        case 3:
          Delete(&file);
          break;
        case 4:
          Duplicate(&file);
          break;
        default:
          Zero(&file);
      }
    }
    return file;
  }

  void DamagedScansLikeNaive(const Bytes& sound, int times) {
    ExpectLikeNaive(sound);
    for (int i = 0; i < times && !HasFailure(); ++i) {
      ExpectLikeNaive(Damaged(sound));
    }
  }

  const unsigned seed_;
  std::mt19937 random_;
};

// What the encoder itself makes of two seconds of noise, some 16 kB.
Bytes EncodedNoise() {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
      popen("ffmpeg -v error -f lavfi -i anoisesrc=d=2:r=44100:seed=1 -ac 2 "
            "-c:a aac -b:a 64k -f adts -",
            "r"),
      pclose);
  Bytes capture;
  for (int c = fgetc(pipe.get()); c != EOF; c = fgetc(pipe.get())) {
    capture.push_back(static_cast<uint8_t>(c));
  }
  return capture;
}

TEST_F(Damage, OfAnEncodedCaptureScansLikeTheNaiveScanner) {
  const Bytes capture = EncodedNoise();
  ASSERT_GT(capture.size(), 10000U);
  DamagedScansLikeNaive(capture, 1500);
}

TEST_F(Damage, OfFramesFullOfSyncwordsScansLikeTheNaiveScanner) {
  for (int i = 0; i < 300 && !HasFailure(); ++i) {
    DamagedScansLikeNaive(RandomCapture(&random_, 1 + Below(30), 60), 30);
  }
}

TEST_F(Damage, OfLargeFramesScansLikeTheNaiveScanner) {
  for (int i = 0; i < 30 && !HasFailure(); ++i) {
    DamagedScansLikeNaive(RandomCapture(&random_, 25, 8182), 4);
  }
}

}  // namespace
}  // namespace corvane_test
