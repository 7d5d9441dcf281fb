// The files that a run of the sweep must leave, as the plugin's calls that
// went well have made them, with the frames in them counted.
#ifndef CORVANE_TESTS_FAULTS_SWEEP_FILES_H_
#define CORVANE_TESTS_FAULTS_SWEEP_FILES_H_

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "adts/scan.h"
#include "support/bytes.h"

namespace corvane_test {

// A whole frame that was there, or whose writes returned: it must never go.
struct SweptFrame {
  size_t end;  // offset just past it
  bool behind_half;
};

struct SweptFile {
  Bytes bytes;
  std::vector<SweptFrame> frames;
  // There is a half-written frame that no repair has cut off yet.
  bool half_written = false;

  // Whether a scan comes by the frame.
  bool Reaches(const SweptFrame& frame) const;
};

class SweptFiles {
 public:
  explicit SweptFiles(const std::map<std::string, Bytes>& content);

  bool Has(const std::string& path) const { return files_.count(path) > 0; }
  bool IsEmpty(const std::string& path) const;
  adts::Scan Scan(const std::string& path) const;
  size_t Size(const std::string& path) const;

  // Audio may go only where `may_lose`; a loss without leave is a failure.
  void Create(const std::string& path, bool may_lose);
  void Move(const std::string& from, const std::string& to, bool may_lose);
  void Append(const std::string& path, const Bytes& bytes);
  void FrameIsWhole(const std::string& path);
  void FrameIsHalf(const std::string& path);
  void CutTail(const std::string& path, int64_t length);
  void PatchHeader(const std::string& path, const Bytes& header);

  const std::map<std::string, SweptFile>& all() const { return files_; }

 private:
  std::map<std::string, SweptFile> files_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_SWEEP_FILES_H_
