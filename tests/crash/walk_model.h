// The promised state of the plugin and of the files around it, in plain terms:
// no codec, no descriptors, no threads. What the encoder makes of the audio is
// told to it; that it is as many frames as promised, it checks.
#ifndef CORVANE_TESTS_CRASH_WALK_MODEL_H_
#define CORVANE_TESTS_CRASH_WALK_MODEL_H_

#include <map>
#include <set>
#include <string>
#include <vector>

#include "adts/scan.h"
#include "crash/walk_step.h"

namespace corvane_test {

// All files and folders, by normal absolute path.
struct World {
  std::map<std::string, Bytes> files;
  std::set<std::string> folders;

  bool Has(const std::string& path) const {
    return files.count(path) > 0 || folders.count(path) > 0;
  }
  // Makes `from`, a file or a folder with all it holds, go by the name `to`.
  void Move(const std::string& from, const std::string& to);
};
World WorldIn(const std::string& folder);
bool operator==(const World& a, const World& b);

class WalkModel {
 public:
  // `folder` is the working directory and the only place that exists.
  explicit WalkModel(const std::string& folder);

  // Carries out one call. `written` are the bytes that the plugin wrote during
  // it. Returns the log lines and the answer that are due.
  std::vector<std::string> Call(const Step& step, const Bytes& written);
  // Follows a step around the plugin, once it is done.
  void Around(const Step& step, const Bytes& written);

  const World& world() const { return world_; }
  // The written bytes were more, less or other than the promised frames.
  const std::string& complaint() const { return complaint_; }
  bool Records(const std::string& path) const;
  std::string Normal(const std::string& path) const;

 private:
  struct Session {
    bool open = false;
    std::string path;
    int rate = 0;
    int channels = 0;
    bool paused = false;
    size_t carry = 0;  // bytes of an incomplete sample frame
    bool codec = false;
    size_t fill = 0;    // sample frames that wait for their frame to fill
    size_t sends = 0;   // frames sent since the codec was opened
    size_t frames = 0;  // frames in the file, as the closing line counts them
  };

  Reply Start(const Step& step);
  Reply Append(size_t bytes);
  Reply Stop();
  Reply ResumePath(const Step& step);
  Reply FinalizePath(const Step& step);
  Reply FinalizeWavOnly(const Step& step);
  Reply Dispatch(const Step& step, bool* quiet);

  void Open(const Step& step);
  void Close(const std::string& reason);
  void Drain();
  Reply Seal(const std::string& path, uint64_t dropped,
             const std::string& label);
  adts::Scan Trim(const std::string& path);
  // `count` frames of the session's format come out of the encoder.
  void Write(size_t count);
  // The errno of opening an entry for writing without creating it; 0: opens.
  int OpenError(const std::string& path) const;
  int ParentError(const std::string& path) const;
  std::string FreeSlot(const std::string& path) const;

  const std::string folder_;
  World world_;
  Session session_;
  uint64_t dropped_ = 0;
  bool append_failure_reported_ = false;
  std::vector<std::string> lines_;
  Bytes written_;
  std::string complaint_;
};

// The method's name as the channel knows it.
const char* MethodOf(const Step& step);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALK_MODEL_H_
