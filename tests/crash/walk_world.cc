// The files and the session behind the calls of the model.
#include <cerrno>
#include <filesystem>

#include "crash/walk_model.h"
#include "support/adts_frames.h"
#include "support/channel_fixture.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace fs = std::filesystem;
namespace {

std::string ParentOf(const std::string& path) {
  return fs::path(path).parent_path().string();
}

size_t DeclaredLength(const Bytes& header) {
  return (header[3] & 3U) << 11 | header[4] << 3 | header[5] >> 5;
}

}  // namespace

World WorldIn(const std::string& folder) {
  World world;
  world.folders.insert(folder);
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const std::string path = entry.path().string();
    if (entry.is_directory()) {
      world.folders.insert(path);
    } else {
      world.files[path] = ReadFile(path);
    }
  }
  return world;
}

bool operator==(const World& a, const World& b) {
  return a.files == b.files && a.folders == b.folders;
}

void World::Move(const std::string& from, const std::string& to) {
  const auto moved = [&](const std::string& path) {
    const bool inside = path == from || path.rfind(from + "/", 0) == 0;
    return inside ? to + path.substr(from.size()) : path;
  };
  World after;
  for (const auto& [path, content] : files) after.files[moved(path)] = content;
  for (const std::string& path : folders) after.folders.insert(moved(path));
  *this = after;
}

WalkModel::WalkModel(const std::string& folder) : folder_(folder) {
  world_.folders.insert(folder);
}

std::string WalkModel::Normal(const std::string& path) const {
  return (fs::path(folder_) / path).lexically_normal().string();
}

bool WalkModel::Records(const std::string& path) const {
  return session_.open && Normal(session_.path) == Normal(path);
}

int WalkModel::ParentError(const std::string& path) const {
  const std::string parent = ParentOf(Normal(path));
  if (world_.folders.count(parent) > 0) return 0;
  return world_.files.count(parent) > 0 ? ENOTDIR : ENOENT;
}

int WalkModel::OpenError(const std::string& path) const {
  const std::string real = Normal(path);
  if (world_.files.count(real) > 0) return 0;
  if (world_.folders.count(real) > 0) return EISDIR;
  const int error = ParentError(path);
  return error != 0 ? error : ENOENT;
}

std::string WalkModel::FreeSlot(const std::string& path) const {
  const size_t base = path.rfind('/') + 1;  // npos + 1 is 0
  const size_t dot = path.rfind('.');
  const size_t stem =
      dot == std::string::npos || dot < base ? path.size() : dot;
  for (int n = 0;; ++n) {
    const std::string slot = path.substr(0, stem) + ".orphan" +
                             (n == 0 ? "" : std::to_string(n)) +
                             path.substr(stem);
    if (!world_.Has(Normal(slot))) return slot;
  }
}

void WalkModel::Around(const Step& step, const Bytes& written) {
  if (step.what == Do::kRestart) {
    written_ = written;
    Close("plugin dispose");
    dropped_ = 0;
    append_failure_reported_ = false;
    return;
  }
  world_ = WorldIn(folder_);
}

void WalkModel::Open(const Step& step) {
  session_ = {};
  session_.open = true;
  session_.path = kWalkPaths[step.path];
  session_.rate = step.rate;
  session_.channels = step.channels;
  dropped_ = 0;
  append_failure_reported_ = false;
}

void WalkModel::Close(const std::string& reason) {
  if (!session_.open) return;
  Drain();
  lines_.push_back(ClosedLine(reason, session_.path, session_.frames));
  session_ = {};
}

// Behind its last frame, which may be short, the encoder owes two: the one it
// kept, and the one that its priming moved everything by.
void WalkModel::Drain() {
  const size_t before = session_.sends;
  if (session_.fill > 0) ++session_.sends;
  if (session_.codec && session_.sends > 0) {
    Write(session_.sends + 1 - (before > 0 ? before - 1 : 0));
  }
  session_.codec = false;
  session_.fill = 0;
  session_.sends = 0;
}

void WalkModel::Write(size_t count) {
  Bytes& file = world_.files[Normal(session_.path)];
  for (size_t i = 0; i < count; ++i) {
    const size_t length =
        written_.size() < 7 ? 0 : DeclaredLength(Slice(written_, 0, 7));
    const Bytes frame = Slice(written_, 0, length);
    if (length < 8 || frame.size() < length ||
        NaiveScan(frame).sample_rate != session_.rate ||
        ChannelConfigOf(frame) != session_.channels) {
      complaint_ = "a promised frame was not written";
      return;
    }
    file = Concat(file, frame);
    written_ = Slice(written_, length);
    ++session_.frames;
  }
}

adts::Scan WalkModel::Trim(const std::string& path) {
  Bytes& file = world_.files[Normal(path)];
  const adts::Scan scan = NaiveScan(file);
  const auto end = static_cast<size_t>(scan.stream_end);
  if (file.size() > end) {
    lines_.push_back(Warning("dropping " + std::to_string(file.size() - end) +
                             " torn trailing bytes from " + path));
    file.resize(end);
  }
  if (scan.skipped_bytes > 0) {
    lines_.push_back(Warning(path + " has " +
                             std::to_string(scan.skipped_bytes) +
                             " non-ADTS bytes between frames; left in place"));
  }
  return scan;
}

const char* MethodOf(const Step& step) {
  switch (step.what) {
    case Do::kStart:
      return "start";
    case Do::kAppend:
      return "append";
    case Do::kPause:
      return "pause";
    case Do::kResume:
      return "resume";
    case Do::kStop:
      return "stop";
    case Do::kCancel:
      return "cancel";
    case Do::kFlush:
      return "flush";
    case Do::kResumePath:
      return "resumePath";
    case Do::kFinalizePath:
      return "finalizePath";
    case Do::kFinalizeWavOnly:
      return "finalizeWavOnly";
    case Do::kBadCall:
      return BadCalls()[step.count].method;
    default:
      return "explode";
  }
}

}  // namespace corvane_test
