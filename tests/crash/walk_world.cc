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

std::string Difference(const World& expected, const World& actual) {
  std::string text;
  const auto list = [&text](const World& world, const World& other) {
    for (const auto& [path, content] : world.files) {
      const auto twin = other.files.find(path);
      if (twin != other.files.end() && twin->second == content) continue;
      text += "\n  " + path + " " + std::to_string(content.size()) + " bytes";
    }
  };
  text += "files due that aren't like this:";
  list(expected, actual);
  text += "\nfiles found instead:";
  list(actual, expected);
  return text + "\n";
}

std::string Difference(const std::vector<std::string>& expected,
                       const std::vector<std::string>& actual) {
  std::string text = "due:\n";
  for (const std::string& line : expected) text += "  " + line + "\n";
  text += "came:\n";
  for (const std::string& line : actual) text += "  " + line + "\n";
  return text;
}

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

std::string SlotOf(const std::string& path, int n) {
  const size_t base = path.rfind('/') + 1;  // npos + 1 is 0
  const size_t dot = path.rfind('.');
  const size_t stem =
      dot == std::string::npos || dot < base ? path.size() : dot;
  return path.substr(0, stem) + ".orphan" + (n == 0 ? "" : std::to_string(n)) +
         path.substr(stem);
}

std::optional<std::string> WalkModel::FreeSlot(const std::string& path) const {
  for (int n = 0; n < kSlots; ++n) {
    const std::string slot = SlotOf(path, n);
    if (!world_.Has(Normal(slot))) return slot;
  }
  return std::nullopt;
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
    if (length < 8 || frame.size() < length) return WriteTorn(&file);
    if (NaiveScan(frame).sample_rate != session_.rate ||
        ChannelConfigOf(frame) != session_.channels) {
      complaint_ = "a frame says that it is of another format";
    }
    file.insert(file.end(), frame.begin(), frame.end());
    written_.erase(written_.begin(), written_.begin() + length);
    Changed();
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
    Changed();
  }
  if (scan.skipped_bytes > 0) {
    lines_.push_back(Warning(path + " has " +
                             std::to_string(scan.skipped_bytes) +
                             " non-ADTS bytes between frames; left in place"));
  }
  return scan;
}

}  // namespace corvane_test
