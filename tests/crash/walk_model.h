// The promised state of the plugin and of the files around it, in plain terms:
// no codec, no descriptors, no threads. What the encoder makes of the audio is
// told to it; that it is as many frames as promised, it checks.
#ifndef CORVANE_TESTS_CRASH_WALK_MODEL_H_
#define CORVANE_TESTS_CRASH_WALK_MODEL_H_

#include <map>
#include <optional>
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
std::string Difference(const World& expected, const World& actual);
std::string Difference(const std::vector<std::string>& expected,
                       const std::vector<std::string>& actual);

// The orphan slot `n` of a path, as written: from 0 to 99.
constexpr int kSlots = 100;
std::string SlotOf(const std::string& path, int n);

class WalkModel {
 public:
  // `folder` is the working directory and the only place that exists.
  explicit WalkModel(const std::string& folder);

  // Carries out one call, or the end of the plugin. `written` are the bytes
  // that the plugin wrote during it. Returns the log lines and the answer that
  // are due.
  std::vector<std::string> Call(const Step& step, const Bytes& written);
  // Follows what was done to the files behind the plugin's back.
  void Follow();
  // The process was killed while it carried out `calls`; it had written
  // `written` (a piece of a frame at the end only if it `may_tear`) and had
  // `said` these lines. Says what contradicts the model, and takes over the
  // files as found.
  std::string Kill(const Walk& calls, const Bytes& written, bool may_tear,
                   const std::vector<std::string>& said, const World& found);

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

  // Files that a killed process may have left, and the lines before them.
  struct Moment {
    World world;
    size_t lines;
  };
  struct Death {};  // thrown where a killed process had come to its end

  void CarryOut(const Step& step);
  void Forget();
  // Follows each change to a file that is made as a whole or not at all.
  void Changed();
  // The next frame wasn't written, or not as a whole.
  void WriteTorn(Bytes* file);
  bool MayFind(const World& found, size_t said) const;

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
  std::optional<std::string> FreeSlot(const std::string& path) const;

  const std::string folder_;
  World world_;
  Session session_;
  uint64_t dropped_ = 0;
  bool append_failure_reported_ = false;
  std::vector<std::string> lines_;
  Bytes written_;
  std::string complaint_;
  bool is_killed_ = false;
  bool may_tear_ = false;
  std::vector<Moment> moments_;  // behind the last byte of `written_`
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_WALK_MODEL_H_
