#include "take/recorder.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/file_descriptor.h"
#include "engine/loop_event.h"
#include "take/rescue.h"

namespace corvane {
namespace {

// A removed file can be synced without an error, so it has to be looked for.
constexpr guint kWatchIntervalMs = 1000;

std::string absolute(const std::string& path) {
  std::error_code error;
  const std::string found = std::filesystem::absolute(path, error).string();
  return error ? path : found;
}

// A new name is durable once its folder is. Where that fails, the first flush
// or the seal meets the same disk, and says so.
void sync_folder_of(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  const FileDescriptor opened(
      open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (opened.is_open()) fsync(opened.get());
}

}  // namespace

Recorder::Recorder(Engine* engine, AudioSource* source, TakeOptions options,
                   CaptureLock* lock, Progress* progress)
    : engine_(engine),
      source_(source),
      options_(std::move(options)),
      absolute_path_(absolute(options_.capture_path)),
      lock_(lock),
      progress_(progress),
      flushes_(engine, options_.flush_every_us, &ending_),
      feeder_(engine, source, options_.feed, &ending_, &flushes_, progress) {}

TakeResult Recorder::Run() {
  if (feeder_.AwaitAudio() && Start()) {
    const int64_t start_us = g_get_monotonic_time();
    if (progress_ != nullptr) progress_->Begin();
    flushes_.Begin();
    {
      const LoopEvent watch =
          LoopEvent::Every(kWatchIntervalMs, [this] { WatchTheFile(); });
      feeder_.Run();
    }
    Seal();
    result_.wall_us = g_get_monotonic_time() - start_us;
  }
  const auto bytes_per_frame =
      static_cast<int64_t>(source_->format().bytes_per_frame());
  result_.end = ending_.end();
  result_.error = ending_.error();
  result_.frames = feeder_.sent_bytes() / bytes_per_frame;
  result_.leftover_bytes = feeder_.sent_bytes() % bytes_per_frame;
  result_.longest_gap_us = feeder_.longest_gap_us();
  result_.flushes = flushes_.figures();
  return std::move(result_);
}

void Recorder::Stop(TakeEnd why) { ending_.Come(why); }

// "start" moves what is there, so whoever is at work on it is asked for before.
bool Recorder::Start() {
  if (!lock_->is_open()) {
    result_.holder = holder_of(options_.capture_path);
    if (result_.holder) return false;
  }
  g_autoptr(FlValue) args = ArgsWith(options_.capture_path);
  fl_value_set_string_take(args, "bitRate",
                           fl_value_new_int(options_.bit_rate));
  Ask(options_.kept ? "resumePath" : "start", args);
  if (ending_.error()) return false;
  result_.started = true;
  if (Claim()) return true;
  Ask("cancel", nullptr);
  result_.started = false;
  return false;
}

// Another program may have started at the same moment: then the file at the
// path is its own, or one that it was faster to lock. Nothing is in ours yet.
bool Recorder::Claim() {
  const std::string& path = options_.capture_path;
  if (!lock_->is_open()) result_.holder = lock_->Take(path);
  if (!result_.holder && lock_->is_open() &&
      !(lock_->IsAt(path) && lock_->IsOpenElsewhereHere())) {
    result_.holder = CaptureHolder();
  }
  if (result_.holder) return false;
  sync_folder_of(absolute_path_);
  return true;
}

void Recorder::WatchTheFile() {
  if (lock_->is_open() && lock_->IsRemoved()) Stop(TakeEnd::kRemoved);
}

// Answers come in call order, so every append is answered by then. "stop" seals
// what is at the path, which must be this take's.
void Recorder::Seal() {
  if (!lock_->is_open() || lock_->IsAt(absolute_path_)) {
    result_.sealed = Ask("stop", nullptr);
    return;
  }
  Ask("cancel", nullptr);  // writes what the codec still holds
  result_.moved_to = SaveElsewhere();
  if (result_.moved_to.empty()) return;
  g_autoptr(FlValue) args = ArgsWith(result_.moved_to);
  fl_value_set_string_take(args, "outputPath",
                           fl_value_new_string(result_.moved_to.c_str()));
  result_.sealed = Ask("finalizePath", args);
}

std::string Recorder::SaveElsewhere() {
  if (!lock_->IsRemoved()) {
    std::string name = lock_->CurrentName();
    if (name.empty()) result_.loss = "its new name is not known";
    return name;
  }
  result_.was_removed = true;
  ending_.Come(TakeEnd::kRemoved);
  const Rescue rescue = rescue_removed(lock_->fd(), absolute_path_);
  result_.loss = rescue.error;
  return rescue.path;
}

std::optional<SealedCapture> Recorder::Ask(const char* method, FlValue* args) {
  bool answered = false;
  std::optional<SealedCapture> sealed;
  engine_->Invoke(method, args, [&](FlMethodResponse* response) {
    answered = true;
    sealed = sealed_capture_in(response);
    ending_.Fail(error_in(response));
  });
  engine_->IterateUntil([&] { return answered; });
  return sealed;
}

// The format is asked for by every method that opens a capture.
FlValue* Recorder::ArgsWith(const std::string& path) const {
  const PcmFormat format = source_->format();
  FlValue* args = fl_value_new_map();
  fl_value_set_string_take(args, "capturePath",
                           fl_value_new_string(path.c_str()));
  fl_value_set_string_take(args, "sampleRate",
                           fl_value_new_int(format.sample_rate));
  fl_value_set_string_take(args, "channels", fl_value_new_int(format.channels));
  return args;
}

}  // namespace corvane
