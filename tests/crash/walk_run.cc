#include "crash/walk_run.h"

#include <algorithm>
#include <filesystem>

#include "support/naive_scan.h"

namespace corvane_test {
namespace fs = std::filesystem;
namespace {

constexpr int64_t kWavHeader = 44;

bool IsCall(const Step& step) { return step.what <= Do::kRestart; }

// The bytes of a file that must stand somewhere in the same place.
struct Piece {
  int64_t from;
  int64_t to;
};

// What the calls may not take away from a file that stood at `path`: all but a
// tail that no scan can reach and the header of a WAV file.
Piece MustStay(const Walk& calls, const WalkModel& model,
               const std::string& path, const Bytes& content) {
  Piece piece{0, static_cast<int64_t>(content.size())};
  for (const Step& call : calls) {
    if (call.what == Do::kStop || call.what == Do::kResumePath ||
        call.what == Do::kFinalizePath) {
      piece.to = NaiveScan(content).stream_end;
    } else if (call.what == Do::kFinalizeWavOnly &&
               model.Normal(kWalkPaths[call.path]) == path) {
      piece.from = kWavHeader;
    }
  }
  return piece;
}

bool Stands(const Piece& piece, const Bytes& content, const Bytes& file) {
  return piece.to <= piece.from ||
         (piece.to <= static_cast<int64_t>(file.size()) &&
          std::equal(content.begin() + piece.from, content.begin() + piece.to,
                     file.begin() + piece.from));
}

// Every byte string that stood somewhere stands somewhere still, as a whole or
// with more behind it.
std::string Lost(const Walk& calls, const WalkModel& model, const World& before,
                 const World& after) {
  for (const auto& [path, content] : before.files) {
    const auto twin = after.files.find(path);
    if (twin != after.files.end() && twin->second == content) continue;
    const Piece piece = MustStay(calls, model, path, content);
    const bool stays = std::any_of(after.files.begin(), after.files.end(),
                                   [&, &old = content](const auto& file) {
                                     return Stands(piece, old, file.second);
                                   });
    if (!stays) return "bytes that stood at " + path + " are gone\n";
  }
  return "";
}

bool HasFolder(const std::string& path) {
  return fs::is_directory(fs::absolute(path).lexically_normal().parent_path());
}

void ChangeFile(const Step& step, const std::string& path) {
  if (step.what == Do::kTear) {
    const size_t size = FileSize(path);
    TruncateFile(path, size - std::min<size_t>(size, step.count));
  } else if (step.what == Do::kLitter) {
    AppendToFile(path, Foreign(step.count));
  } else if (step.what == Do::kRemove) {
    fs::remove(path);
  }
}

void MakeEntry(const Step& step, const std::string& path) {
  if (step.what == Do::kForeignFile) {
    WriteFile(path, Foreign(step.count));
  } else if (step.what == Do::kFolder) {
    fs::create_directory(path);
    WriteFile(path + "/inside", Foreign(10));
  }
}

void FillSlots(const std::string& path, int spared) {
  for (int n = 0; n < kSlots; ++n) {
    const std::string slot = SlotOf(path, n);
    if (!Exists(slot) && --spared < 0) WriteFile(slot, Foreign(1 + n % 3));
  }
}

}  // namespace

WalkRun::WalkRun(const Walk& walk)
    : walk_(walk), inside_(folder_.path()), model_(folder_.path()) {}

std::string WalkRun::Run() {
  while (at_ < walk_.size()) {
    const size_t first = at_;
    const Step& step = walk_[first];
    if (!process_) process_.emplace(walk_);
    std::string wrong;
    if (step.what == Do::kKill) {
      wrong = Kill();
    } else if (IsCall(step)) {
      wrong = Compare();
    } else {
      ChangeFiles();
    }
    wrong += model_.complaint();
    if (!wrong.empty()) return "step " + std::to_string(first) + ": " + wrong;
  }
  return "";
}

std::string WalkRun::Compare() {
  const Step& step = walk_[at_];
  const World before = model_.world();
  const Report report = process_->Do(at_++);
  if (report.is_killed) return "killed by somebody else";
  if (!report.failure.empty()) return report.failure;
  const auto due = model_.Call(step, report.written);
  const World found = WorldIn(folder_.path());
  std::string wrong;
  if (due != report.lines) wrong = Difference(due, report.lines);
  if (!(found == model_.world())) wrong += Difference(model_.world(), found);
  return wrong + Lost({step}, model_, before, found);
}

std::string WalkRun::Kill() {
  const Step& kill = walk_[at_];
  const World before = model_.world();
  const Walk calls = kill.count > 0 ? CallsBehind(walk_, at_) : Walk();
  const Report report = process_->Do(at_);
  process_.reset();
  at_ += 1 + calls.size();
  if (!report.is_killed) return report.failure;
  ++kills_;
  const auto is_answer = [](const std::string& line) {
    return line.find(" -> ") != std::string::npos;
  };
  const auto answers =
      std::count_if(report.lines.begin(), report.lines.end(), is_answer);
  if (answers < static_cast<int64_t>(calls.size())) ++kills_inside_;
  const World found = WorldIn(folder_.path());
  return model_.Kill(calls, report.written, kill.bytes > 0, report.lines,
                     found) +
         Lost(calls, model_, before, found);
}

void WalkRun::ChangeFiles() {
  const Step& step = walk_[at_++];
  const std::string& path = kWalkPaths[step.path];
  if (fs::is_regular_file(path)) {
    const bool is_open = model_.Records(path);
    if (step.what != Do::kRemove || !is_open) ChangeFile(step, path);
  } else if (!fs::exists(path) && HasFolder(path)) {
    MakeEntry(step, path);
  }
  if (step.what == Do::kFillSlots && HasFolder(path)) {
    FillSlots(path, step.count);
  }
  model_.Follow();
}

}  // namespace corvane_test
