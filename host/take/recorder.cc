#include "take/recorder.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "engine/loop_event.h"

namespace corvane {
namespace {

// A removed file can be synced without an error, so it has to be looked for.
constexpr guint kWatchIntervalMs = 1000;

constexpr size_t kLeastDigits = 3;

bool can_make_files_beside(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0;
}

}  // namespace

bool TakeResult::has_sealed() const {
  return std::any_of(parts.begin(), parts.end(),
                     [](const PartResult& part) { return part.sealed; });
}

std::string part_path(const std::string& capture_path, int number) {
  const std::filesystem::path path(capture_path);
  std::string digits = std::to_string(number);
  if (digits.size() < kLeastDigits) {
    digits.insert(0, kLeastDigits - digits.size(), '0');
  }
  std::filesystem::path name = path.stem();
  name += "-" + digits;
  name += path.extension();
  return (path.parent_path() / name).string();
}

Recorder::Recorder(Engine* engine, AudioSource* source, TakeOptions options,
                   CaptureLock lock, Progress* progress)
    : engine_(engine),
      source_(source),
      options_(std::move(options)),
      first_lock_(std::move(lock)),
      progress_(progress),
      flushes_(engine, options_.flush_every_us, &ending_),
      feeder_(engine, source, options_.feed, &ending_, &flushes_, progress) {}

TakeResult Recorder::Run() {
  if (feeder_.AwaitAudio()) {
    BeginPart(std::move(first_lock_));
    parts_.back().AwaitAnswers();
  }
  if (!parts_.empty() && parts_.back().result().started) {
    const int64_t start_us = g_get_monotonic_time();
    if (progress_ != nullptr) progress_->Begin();
    has_begun_ = true;
    flushes_.Begin();
    {
      const LoopEvent watch =
          LoopEvent::Every(kWatchIntervalMs, [this] { parts_.back().Watch(); });
      feeder_.Run([this] { NextPart(); });
    }
    EndPart();
    parts_.back().Seal();
    for (Part& part : parts_) part.AwaitAnswers();
    result_.wall_us = g_get_monotonic_time() - start_us;
  }
  CollectResult();
  return std::move(result_);
}

void Recorder::CollectResult() {
  result_.end = ending_.end();
  result_.error = ending_.error();
  result_.frames = feeder_.sent_frames();
  result_.leftover_bytes = feeder_.leftover_bytes();
  result_.longest_gap_us = feeder_.longest_gap_us();
  result_.last_gap_us = feeder_.last_gap_us();
  result_.flushes = flushes_.figures();
  for (Part& part : parts_) {
    result_.parts.push_back(std::move(part.result()));
  }
  if (options_.feed.part_frames) {
    result_.next_path = part_path(options_.capture_path, next_number_);
  }
}

void Recorder::BeginPart(CaptureLock lock) {
  PartSetup setup;
  setup.path = NextPath();
  setup.format = source_->format();
  setup.bit_rate = options_.bit_rate;
  setup.goes_on = options_.kept.has_value();
  if (progress_ != nullptr) progress_->SetCapturePath(setup.path);
  parts_.emplace_back(engine_, &ending_, std::move(setup), std::move(lock));
  parts_.back().Begin();
}

void Recorder::EndPart() {
  parts_.back().result().frames = feeder_.sent_frames() - part_start_;
  part_start_ = feeder_.sent_frames();
}

// A number that another program is at work on is left out: behind the first
// part there is nobody any more who could choose another name.
std::string Recorder::NextPath() {
  if (!options_.feed.part_frames) return options_.capture_path;
  std::string path = part_path(options_.capture_path, next_number_++);
  while (!parts_.empty() && holder_of(path)) {
    path = part_path(options_.capture_path, next_number_++);
  }
  return path;
}

// Nothing of it waits for an answer, so a slow disk holds up no audio. Where no
// file can be made, the open one goes on.
void Recorder::NextPart() {
  if (!can_make_files_beside(options_.capture_path)) {
    ++result_.missed_splits;
    return;
  }
  EndPart();
  parts_.back().Seal();
  BeginPart(CaptureLock());
}

void Recorder::Stop(TakeEnd why) { ending_.Come(why); }

std::optional<bool> Recorder::TogglePause() {
  if (!has_begun_ || ending_.has_come()) return std::nullopt;
  const bool is_paused = !feeder_.is_paused();
  if (is_paused) ++result_.pauses;
  engine_->Invoke(
      is_paused ? "pause" : "resume", nullptr,
      [this](FlMethodResponse* response) { ending_.Fail(error_in(response)); });
  feeder_.SetPaused(is_paused);
  if (progress_ != nullptr) progress_->SetPaused(is_paused);
  return is_paused;
}

std::optional<int64_t> Recorder::Mark() {
  if (!has_begun_ || ending_.has_come()) return std::nullopt;
  result_.marks.push_back(PositionMs());
  return result_.marks.back();
}

int64_t Recorder::PositionMs() const {
  const int64_t kept_ms = options_.kept ? options_.kept->duration_ms : 0;
  return kept_ms + feeder_.sent_frames() * 1000 / source_->format().sample_rate;
}

}  // namespace corvane
