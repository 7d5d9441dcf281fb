#include "faults/sweep_files.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/adts_frames.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {

SweptFiles::SweptFiles(const std::map<std::string, Bytes>& content) {
  for (const auto& [path, bytes] : content) {
    SweptFile& file = files_[path];
    file.bytes = bytes;
    const adts::Scan scan = NaiveScan(bytes);
    for (const Bytes& frame :
         SplitFrames(Slice(bytes, 0, static_cast<size_t>(scan.valid_end)))) {
      const size_t start = file.frames.empty() ? 0 : file.frames.back().end;
      file.frames.push_back({start + frame.size(), false});
    }
  }
}

// A scan of no more than what stands up to the frame's end must end with it.
bool SweptFile::Reaches(const SweptFrame& frame) const {
  const adts::Scan scan = NaiveScan(Slice(bytes, 0, frame.end));
  return scan.valid_end == static_cast<int64_t>(frame.end);
}

bool SweptFiles::IsEmpty(const std::string& path) const {
  return !Has(path) || files_.at(path).bytes.empty();
}

adts::Scan SweptFiles::Scan(const std::string& path) const {
  return NaiveScan(files_.at(path).bytes);
}

size_t SweptFiles::Size(const std::string& path) const {
  return files_.at(path).bytes.size();
}

void SweptFiles::Create(const std::string& path, bool may_lose) {
  EXPECT_TRUE(IsEmpty(path) || may_lose) << path << " was cut to nothing";
  files_[path] = {};
}

void SweptFiles::Move(const std::string& from, const std::string& to,
                      bool may_lose) {
  EXPECT_TRUE(!Has(to) || may_lose) << to << " was replaced";
  files_[to] = files_.at(from);
  files_.erase(from);
}

void SweptFiles::Append(const std::string& path, const Bytes& bytes) {
  SweptFile& file = files_.at(path);
  file.bytes.insert(file.bytes.end(), bytes.begin(), bytes.end());
}

void SweptFiles::FrameIsWhole(const std::string& path) {
  SweptFile& file = files_.at(path);
  file.frames.push_back({file.bytes.size(), file.half_written});
}

void SweptFiles::FrameIsHalf(const std::string& path) {
  files_.at(path).half_written = true;
}

void SweptFiles::CutTail(const std::string& path, int64_t length) {
  EXPECT_EQ(length, Scan(path).stream_end)
      << path << " is cut elsewhere than behind its last whole frame";
  SweptFile& file = files_.at(path);
  file.bytes.resize(static_cast<size_t>(length));
  file.half_written = false;
}

void SweptFiles::PatchHeader(const std::string& path, const Bytes& header) {
  Bytes& bytes = files_.at(path).bytes;
  bytes.resize(std::max(bytes.size(), header.size()));
  std::copy(header.begin(), header.end(), bytes.begin());
}

}  // namespace corvane_test
