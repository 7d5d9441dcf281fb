// A disk that may lose power: what the plugin did to its files, and every
// state that the files may be found in afterwards. docs/testing.md states what
// the model takes for granted.
#ifndef CORVANE_TESTS_CRASH_DISK_MODEL_H_
#define CORVANE_TESTS_CRASH_DISK_MODEL_H_

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/chance.h"
#include "support/faults.h"

namespace corvane_test {

struct DiskOp {
  enum class Kind { kCreate, kWrite, kCut, kRename, kSync };
  Kind kind;
  std::string path;
  std::string to;      // of a rename
  Bytes data;          // of a write
  int64_t length = 0;  // of a cut
};

// Keeps every change that the plugin makes to a file, as long as it lives.
class DiskRecorder {
 public:
  DiskRecorder();
  // To be read while the plugin is idle.
  const std::vector<DiskOp>& ops() const { return ops_; }

 private:
  Rule Tap(const char* function, std::function<void(const PluginCall&)> keep);

  std::vector<DiskOp> ops_;
  Fault create_;
  Fault write_;
  Fault cut_;
  Fault rename_;
  Fault sync_;
};

// A change to a file's bytes that no sync has made durable.
struct Change {
  bool is_cut = false;
  int64_t at = 0;  // where a write goes, or the length that a cut leaves
  Bytes data;
};

// What became of a change: it is there; it isn't; or, of a write, its first
// `kept` bytes are there, or as many zeros as it has bytes.
struct Fate {
  enum class Kind { kSurvives, kVanishes, kCutShort, kZeros };
  Kind kind = Kind::kSurvives;
  size_t kept = 0;
};
using Fates = std::vector<Fate>;

// All that may have become of one change, its survival first.
Fates FatesOf(const Change& change);

struct File {
  Bytes durable;
  std::vector<Change> pending;
  bool has_durable_name = true;
  int64_t size = 0;  // as the running system sees it

  Bytes After(const Fates& fates) const;
};

// The files after some operations, by their names before and after a rename
// that no later sync has made durable.
struct Disk {
  std::map<std::string, File> files;
  std::map<std::string, File> without_rename;  // empty where none is pending

  void Apply(const DiskOp& op);
};

// Calls `visit` with the fates of `changes`: all combinations for up to four
// of them, else one deviation at every position and `random` random ones.
void ForEachFates(const std::vector<Change>& changes, int random,
                  Chance* chance,
                  const std::function<void(const Fates&)>& visit);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_DISK_MODEL_H_
