#include "plugin_judge.h"

#include <algorithm>

#include "fuzzing.h"
#include "support/channel_fixture.h"
#include "support/naive_path.h"
#include "support/naive_scan.h"

namespace corvane_fuzz {
namespace {

using corvane_test::NaiveScan;
using corvane_test::Reply;
using corvane_test::World;
using Lines = std::vector<std::string>;

constexpr size_t kWavHeader = 44;

std::string Joined(const Lines& lines) {
  std::string text;
  for (const std::string& line : lines) text += "\n  " + line;
  return text;
}

void RequireLines(const Lines& due, const Lines& came) {
  Require(due == came, "due:" + Joined(due) + "\ncame:" + Joined(came));
}

// The part of a file that `method` must not take away, if it comes to that
// file: a seal cuts what no scan can reach, and a header that is given is not
// that of a WAV file.
Bytes MustStay(const std::string& method, const Bytes& content) {
  if (method == "finalizeWavOnly") {
    return Bytes(content.begin() + std::min(kWavHeader, content.size()),
                 content.end());
  }
  const bool trims =
      method == "stop" || method == "resumePath" || method == "finalizePath";
  if (!trims) return content;
  return Bytes(content.begin(),
               content.begin() + NaiveScan(content).stream_end);
}

bool Holds(const Bytes& file, const Bytes& part, size_t at) {
  return file.size() >= at + part.size() &&
         std::equal(part.begin(), part.end(), file.begin() + at);
}

// Every byte string that stood somewhere stands somewhere still, as a whole or
// with more behind it.
void HoldNothingLost(const std::string& method, const World& before,
                     const World& after) {
  const size_t at = method == "finalizeWavOnly" ? kWavHeader : 0;
  for (const auto& [path, content] : before.files) {
    if (after.files.count(path) > 0 && after.files.at(path) == content)
      continue;
    const Bytes part = MustStay(method, content);
    const bool stays =
        part.empty() || std::any_of(after.files.begin(), after.files.end(),
                                    [&part = part, at](const auto& file) {
                                      return Holds(file.second, part, at);
                                    });
    Require(stays, method + " took away what stood at " + path);
  }
}

}  // namespace

PluginJudge::PluginJudge(const std::string& folder)
    : folder_(folder),
      model_(std::in_place, folder),
      world_(corvane_test::WorldIn(folder)) {}

void PluginJudge::AfterRefusal(const std::string& method, const Reply& refusal,
                               const Outcome& outcome) {
  Lines due;
  if (refusal.kind == Reply::Kind::kError) {
    due.push_back(corvane_test::Failed(method, refusal));
  }
  due.push_back(corvane_test::Answer(method, refusal));
  RequireLines(due, outcome.lines);
  Require(corvane_test::WorldIn(folder_) == world_,
          "a refused " + method + " touched a file");
}

void PluginJudge::AfterStep(const corvane_test::Step& step,
                            const Outcome& outcome) {
  if (!model_) return AfterOther(MethodOf(step), outcome);
  RequireLines(model_->Call(step, outcome.written), outcome.lines);
  Look(MethodOf(step));
  HoldModel();
}

void PluginJudge::AfterOther(const std::string& method,
                             const Outcome& outcome) {
  model_.reset();
  Look(method);
  const Reply& reply = outcome.reply;
  Require(reply.kind != Reply::Kind::kMalformed, "malformed: " + reply.message);
  if (reply.kind != Reply::Kind::kFigures) return;
  const auto file =
      world_.files.find(corvane_test::NaiveNormalize(reply.path, folder_));
  Require(file != world_.files.end() &&
              reply.bytes == static_cast<int64_t>(file->second.size()),
          "not the size of what was sealed: " + ToString(reply));
}

void PluginJudge::AfterRestart(const Outcome& outcome) {
  if (model_) {
    // Its lines reach nobody: the log channel ends before the plugin does.
    model_->Call({corvane_test::Do::kRestart}, outcome.written);
    Look("dispose");
    HoldModel();
  } else {
    Look("dispose");
  }
}

void PluginJudge::AfterChange() {
  world_ = corvane_test::WorldIn(folder_);
  if (model_) model_->Follow();
}

bool PluginJudge::MayRemove(const std::string& path) const {
  return !model_ || !model_->Records(path);
}

void PluginJudge::Look(const std::string& method) {
  World after = corvane_test::WorldIn(folder_);
  HoldNothingLost(method, world_, after);
  world_ = std::move(after);
}

void PluginJudge::HoldModel() {
  Require(model_->complaint().empty(), model_->complaint());
  Require(model_->world() == world_, "other files than the model's");
}

Reply SealedReply(const std::string& path, const Bytes& content) {
  const adts::Scan scan = NaiveScan(content);
  if (scan.samples < 1) {
    return corvane_test::FileError("VERIFY_FAILED",
                                   "capture holds no complete AAC frame (" +
                                       std::to_string(scan.stream_end) +
                                       " bytes)",
                                   path);
  }
  return corvane_test::Figures(path, scan.DurationMs(), scan.stream_end);
}

}  // namespace corvane_fuzz
