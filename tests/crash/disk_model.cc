#include "crash/disk_model.h"

#include <fcntl.h>

#include <algorithm>
#include <utility>

namespace corvane_test {
namespace {

constexpr size_t kExhaustive = 4;

using Kind = DiskOp::Kind;

void Place(const Bytes& data, int64_t at, Bytes* content) {
  const auto end = static_cast<size_t>(at) + data.size();
  if (content->size() < end) content->resize(end);  // a hole reads as zeros
  std::copy(data.begin(), data.end(), content->begin() + at);
}

void Carry(const Change& change, const Fate& fate, Bytes* content) {
  if (fate.kind == Fate::Kind::kVanishes) return;
  if (change.is_cut) return content->resize(change.at);
  Bytes data = change.data;
  if (fate.kind == Fate::Kind::kZeros) std::fill(data.begin(), data.end(), 0);
  if (fate.kind == Fate::Kind::kCutShort) data.resize(fate.kept);
  Place(data, change.at, content);
}

}  // namespace

Rule DiskRecorder::Tap(const char* function,
                       std::function<void(const PluginCall&)> keep) {
  return On(function).MayMiss().After([keep = std::move(keep)](PluginCall& c) {
    if (c.result >= 0) keep(c);
  });
}

DiskRecorder::DiskRecorder()
    : create_(Tap("open",
                  [this](const PluginCall& call) {
                    if ((call.flags & O_CREAT) == 0) return;
                    ops_.push_back({Kind::kCreate, call.path, "", {}});
                  })),
      write_(Tap("write",
                 [this](const PluginCall& call) {
                   const auto* data = static_cast<const uint8_t*>(call.data);
                   ops_.push_back({Kind::kWrite, call.path, "",
                                   Bytes(data, data + call.result)});
                 })),
      cut_(Tap("ftruncate",
               [this](const PluginCall& call) {
                 ops_.push_back({Kind::kCut, call.path, "", {}, call.size});
               })),
      rename_(
          Tap("rename",
              [this](const PluginCall& call) {
                ops_.push_back({Kind::kRename, call.path, call.new_path, {}});
              })),
      sync_(Tap("fsync", [this](const PluginCall& call) {
        ops_.push_back({Kind::kSync, call.path, "", {}});
      })) {}

Fates FatesOf(const Change& change) {
  Fates fates = {{Fate::Kind::kSurvives}, {Fate::Kind::kVanishes}};
  if (change.is_cut) return fates;
  fates.push_back({Fate::Kind::kZeros});
  // Inside the header, right behind it, and all but the last byte.
  for (const size_t kept : {size_t{5}, size_t{7}, change.data.size() - 1}) {
    if (kept < change.data.size()) {
      fates.push_back({Fate::Kind::kCutShort, kept});
    }
  }
  return fates;
}

Bytes File::After(const Fates& fates) const {
  Bytes content = durable;
  for (size_t i = 0; i < pending.size(); ++i) {
    Carry(pending[i], fates[i], &content);
  }
  return content;
}

void Disk::Apply(const DiskOp& op) {
  if (op.kind == Kind::kRename) {
    without_rename = files;
    files[op.to] = std::move(files[op.path]);
    files.erase(op.path);
    return;
  }
  File& file = files[op.path];
  if (op.kind == Kind::kCreate) {
    file.has_durable_name = file.has_durable_name && file.size > 0;
    // The plugin truncates none but empty files; any other would be lost.
    if (file.size > 0) file.pending.push_back({true, 0, {}});
    file.size = 0;
  } else if (op.kind == Kind::kWrite) {
    file.pending.push_back({false, file.size, op.data});
    file.size += static_cast<int64_t>(op.data.size());
  } else if (op.kind == Kind::kCut) {
    file.pending.push_back({true, op.length, {}});
    file.size = op.length;
  } else {
    file.durable = file.After(Fates(file.pending.size()));
    file.pending.clear();
    file.has_durable_name = true;
    without_rename.clear();
  }
}

void ForEachFates(const std::vector<Change>& changes, int random,
                  Chance* chance,
                  const std::function<void(const Fates&)>& visit) {
  Fates fates(changes.size());
  if (changes.size() <= kExhaustive) {
    const std::function<void(size_t)> choose = [&](size_t i) {
      if (i == changes.size()) return visit(fates);
      for (const Fate& fate : FatesOf(changes[i])) {
        fates[i] = fate;
        choose(i + 1);
      }
    };
    return choose(0);
  }
  visit(fates);
  for (size_t i = 0; i < changes.size(); ++i) {
    for (const Fate& fate : FatesOf(changes[i])) {
      fates[i] = fate;
      visit(fates);
    }
    fates[i] = {};
  }
  for (int n = 0; n < random; ++n) {
    for (size_t i = 0; i < changes.size(); ++i) {
      const Fates all = FatesOf(changes[i]);
      fates[i] = all[chance->Between(0, static_cast<int>(all.size()) - 1)];
    }
    visit(fates);
  }
}

}  // namespace corvane_test
