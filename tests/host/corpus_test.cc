// Files that are no captures: not one of them is taken for one. They are only
// looked at, in this process; no command is ever given one of the system's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <sstream>

#include "host/child_process.h"
#include "looks/capture_look.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

namespace fs = std::filesystem;

class CorpusTest : public ::testing::Test {
 protected:
  // As `resume` and `finalize` take it; also if its first bytes named nothing.
  static bool IsTaken(const std::string& path) {
    const corvane::CaptureLook look = corvane::look_at_capture(path, false);
    if (look.error.empty() && look.objection.empty()) return true;
    const corvane::RegularFile file(path);
    return corvane::first_whole_frame(file) &&
           corvane::objection_by_evidence(file).empty();
  }

  bool IsTaken(const Bytes& content) {
    const std::string path = dir_.Path("content");
    WriteFile(path, content);
    return IsTaken(path);
  }

  // Random bytes, the same for the same seed.
  static Bytes RandomBytes(size_t size, uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(size);
    for (size_t i = 0; i < size; i += 4) {
      const uint32_t four = random();
      for (size_t k = i; k < std::min(i + 4, size); ++k) {
        bytes[k] = static_cast<uint8_t>(four >> 8 * (k - i));
      }
    }
    return bytes;
  }

  // Speech as MP3, in pieces of half a second, at five bit rates, mono and
  // stereo, half of them with ID3 tags.
  void MakeMp3s() {
    const ChildResult run = Child({"/bin/bash", "-c", R"(
          cd "$1" && outputs=() tag=0
          for rate in 32k 48k 64k 96k 128k; do
            for channels in 1 2; do
              outputs+=(-ac $channels -c:a libmp3lame -b:a $rate
                -f segment -segment_time 0.5 -segment_format mp3
                -segment_format_options
                "id3v2_version=$((tag = 4 - tag)):write_xing=0"
                "$rate-$channels-%02d.mp3")
            done
          done
          cat /usr/share/sounds/alsa/*_*.wav |
            ffmpeg -v error -f s16le -ar 48000 -ac 1 -i - "${outputs[@]}")",
                                   "bash", dir_.path()},
                                  {})
                                .Wait();
    ASSERT_EQ(run.status, 0) << run.err;
  }

  TempDir dir_;
};

TEST_F(CorpusTest, NoMp3IsTakenNorWhatIsLeftOfOne) {
  MakeMp3s();
  size_t seen = 0;
  size_t tagged = 0;
  for (const std::string& name : ListDir(dir_.path())) {
    const Bytes mp3 = ReadFile(dir_.Path(name));
    ASSERT_GT(mp3.size(), 1000U) << name;
    ++seen;
    tagged += mp3[0] == 'I' ? 1 : 0;
    EXPECT_FALSE(IsTaken(dir_.Path(name))) << name;
    // As a download that lost its start has it.
    EXPECT_FALSE(IsTaken(Slice(mp3, 100))) << name;
  }
  EXPECT_GE(seen, 200U);
  EXPECT_GE(tagged, 80U);
  EXPECT_LE(tagged, seen - 80);
}

TEST_F(CorpusTest, NoNoiseIsTaken) {
  for (uint32_t seed = 1; seed <= 8; ++seed) {
    EXPECT_FALSE(IsTaken(RandomBytes(4 << 20, seed))) << "seed " << seed;
  }
  const uint32_t seed = TestSeed();
  EXPECT_FALSE(IsTaken(RandomBytes(4 << 20, seed))) << "seed " << seed;
}

TEST_F(CorpusTest, NoZerosAreTaken) {
  for (const size_t size : {1, 7, 100, 4096, 1 << 20}) {
    EXPECT_FALSE(IsTaken(Bytes(size, 0))) << size;
    EXPECT_FALSE(IsTaken(Bytes(size + 1, 0xFF))) << size + 1;
  }
}

// Whatever stands behind it.
TEST_F(CorpusTest, NoNamedKindIsTaken) {
  const Bytes frame = {0xFF, 0xF1, 0x4C, 0x40, 0x02, 0x1F, 0xFC, 1,
                       2,    3,    4,    5,    6,    7,    8,    9};
  Bytes frames;
  while (frames.size() < 4096) frames = Concat(frames, frame);
  const std::string path = dir_.Path("capture");
  WriteFile(path, frames);
  ASSERT_TRUE(IsTaken(path));
  const std::vector<std::string> starts = {"ID3\x04",
                                           "RIFF....WAVE",
                                           "RIFF....AVI ",
                                           "RIFX....WAVE",
                                           "RF64",
                                           "fLaC",
                                           "OggS",
                                           "FORM",
                                           "caff",
                                           "....ftyp",
                                           "....moov",
                                           "\x7F"
                                           "ELF",
                                           "%PDF",
                                           "\xFF\xD8\xFF",
                                           "\x89PNG",
                                           "GIF89a",
                                           "PK\x03\x04",
                                           "PK\x05\x06",
                                           "7z\xBC\xAF\x27\x1C",
                                           "\x1F\x8B",
                                           "BZh9",
                                           "\xFD"
                                           "7zXZ",
                                           "\x28\xB5\x2F\xFD",
                                           "\x1A\x45\xDF\xA3",
                                           "\xFF\xFB\x90",
                                           "\xFF\xF3\x90",
                                           "\xFF\xFD\x90",
                                           "\xFF\xE3\x90",
                                           std::string(257, '.') + "ustar"};
  for (const std::string& start : starts) {
    WriteFile(path, Concat(Bytes(start.begin(), start.end()), frames));
    EXPECT_NE(corvane::look_at_capture(path, false).objection, "")
        << testing::PrintToString(start);
  }
}

// The regular files below the folders, the largest first.
std::vector<std::pair<int64_t, std::string>> FilesBelow(
    const std::vector<std::string>& folders) {
  std::vector<std::pair<int64_t, std::string>> files;
  for (const std::string& folder : folders) {
    std::error_code ignored;
    const auto options = fs::directory_options::skip_permission_denied;
    for (auto entry =
             fs::recursive_directory_iterator(folder, options, ignored);
         entry != fs::recursive_directory_iterator();
         entry.increment(ignored)) {
      const fs::file_status status = entry->symlink_status(ignored);
      if (!fs::is_regular_file(status)) continue;
      const auto size = static_cast<int64_t>(entry->file_size(ignored));
      if (size > 0) files.emplace_back(size, entry->path().string());
    }
  }
  std::sort(files.rbegin(), files.rend());
  return files;
}

// CORVANE_LOOK_AT=/usr/lib:/usr/bin has all that is there looked at instead of
// a sample.
TEST_F(CorpusTest, NoFileOfTheSystemIsTaken) {
  constexpr size_t kSampleFiles = 40;
  constexpr int64_t kLargestSample = 4 << 20;
  const char* const wanted = getenv("CORVANE_LOOK_AT");
  std::istringstream list(wanted != nullptr ? wanted : "/usr/lib:/usr/bin");
  std::vector<std::string> folders;
  for (std::string folder; std::getline(list, folder, ':');) {
    folders.push_back(folder);
  }
  size_t seen = 0;
  int64_t bytes = 0;
  for (const auto& [size, path] : FilesBelow(folders)) {
    if (wanted == nullptr) {
      if (seen == kSampleFiles) break;
      if (size > kLargestSample) continue;
    }
    ++seen;
    bytes += size;
    EXPECT_FALSE(IsTaken(path)) << path;
  }
  std::cout << "  " << seen << " files, " << bytes << " bytes" << std::endl;
  EXPECT_GT(seen, 20U);
}

}  // namespace
}  // namespace corvane_test
