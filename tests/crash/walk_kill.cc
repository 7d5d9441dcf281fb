// A killed process, as the model sees it: it knows which calls were sent, what
// had been written and which lines had come, and hence the few states that the
// files can be in.
#include <algorithm>

#include "crash/walk_model.h"

namespace corvane_test {

void WalkModel::Forget() {
  session_ = {};
  dropped_ = 0;
  append_failure_reported_ = false;
}

void WalkModel::Follow() { world_ = WorldIn(folder_); }

// Before the last byte that was written there was no death.
void WalkModel::Changed() {
  if (is_killed_ && written_.empty())
    moments_.push_back({world_, lines_.size()});
}

void WalkModel::WriteTorn(Bytes* file) {
  if (!is_killed_) {
    complaint_ = "a promised frame was not written";
    return;
  }
  if (!written_.empty()) {
    if (!may_tear_) complaint_ = "a frame was written in pieces";
    file->insert(file->end(), written_.begin(), written_.end());
    written_.clear();
    Changed();
  }
  throw Death();
}

std::string WalkModel::Kill(const Walk& calls, const Bytes& written,
                            bool may_tear, const std::vector<std::string>& said,
                            const World& found) {
  lines_.clear();
  moments_.clear();
  written_ = written;
  is_killed_ = true;
  may_tear_ = may_tear;
  Changed();
  try {
    for (const Step& step : calls) CarryOut(step);
  } catch (const Death&) {
  }
  is_killed_ = false;
  std::string wrong;
  if (!written_.empty()) complaint_ = "more was written than promised";
  if (said.size() > lines_.size() ||
      !std::equal(said.begin(), said.end(), lines_.begin())) {
    wrong = Difference(lines_, said);
  } else if (!MayFind(found, said.size())) {
    wrong =
        "none of the states that a kill may leave; beside the last:\n" +
        Difference(moments_.empty() ? world_ : moments_.back().world, found);
  }
  Forget();
  world_ = found;
  return wrong;
}

// A line that had come tells that the changes before it were made.
bool WalkModel::MayFind(const World& found, size_t said) const {
  for (size_t i = 0; i < moments_.size(); ++i) {
    const bool is_past =
        i + 1 < moments_.size() && moments_[i + 1].lines < said;
    if (!is_past && moments_[i].world == found) return true;
  }
  return false;
}

}  // namespace corvane_test
