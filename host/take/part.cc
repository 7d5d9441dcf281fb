#include "take/part.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "engine/file_descriptor.h"
#include "take/rescue.h"

namespace corvane {
namespace {

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

Part::Part(Engine* engine, Ending* ending, PartSetup setup, CaptureLock lock)
    : engine_(engine),
      ending_(ending),
      setup_(std::move(setup)),
      absolute_path_(absolute(setup_.path)),
      lock_(std::move(lock)) {
  result_.path = setup_.path;
}

// "start" moves what is there, so whoever is at work on it is asked for before.
void Part::Begin() {
  if (!lock_.is_open()) result_.holder = holder_of(setup_.path);
  if (result_.holder) {
    ending_->Come(TakeEnd::kHeld);
    return;
  }
  g_autoptr(FlValue) args = ArgsWith(setup_.path);
  fl_value_set_string_take(args, "bitRate", fl_value_new_int(setup_.bit_rate));
  ++unanswered_;
  engine_->Invoke(setup_.goes_on ? "resumePath" : "start", args,
                  [this](FlMethodResponse* response) { OnBegun(response); });
}

void Part::OnBegun(FlMethodResponse* response) {
  --unanswered_;
  const auto error = error_in(response);
  ending_->Fail(error);
  if (error) return;
  result_.started = Claim();
  if (result_.started) return;
  ending_->Come(TakeEnd::kHeld);
  Send("cancel", nullptr);
}

// Another program may have started at the same moment: then the file at the
// path is its own, or one that it was faster to lock.
bool Part::Claim() {
  if (!lock_.is_open()) result_.holder = lock_.Take(setup_.path);
  if (!result_.holder && lock_.is_open() &&
      !(lock_.IsAt(setup_.path) && lock_.IsOpenElsewhereHere())) {
    result_.holder = CaptureHolder();
  }
  if (result_.holder) return false;
  sync_folder_of(absolute_path_);
  return true;
}

void Part::Watch() {
  if (lock_.is_open() && lock_.IsRemoved()) ending_->Come(TakeEnd::kRemoved);
}

// "stop" seals what is at the path, which must be this part.
void Part::Seal() {
  AwaitAnswers();
  if (!result_.started) return;
  if (!lock_.is_open() || lock_.IsAt(absolute_path_)) {
    Send("stop", nullptr);
  } else {
    SealElsewhere();
  }
}

void Part::SealElsewhere() {
  Send("cancel", nullptr);  // writes what the codec still holds
  AwaitAnswers();
  result_.moved_to = SaveElsewhere();
  if (result_.moved_to.empty()) return;
  g_autoptr(FlValue) args = ArgsWith(result_.moved_to);
  fl_value_set_string_take(args, "outputPath",
                           fl_value_new_string(result_.moved_to.c_str()));
  Send("finalizePath", args);
}

std::string Part::SaveElsewhere() {
  if (!lock_.IsRemoved()) {
    std::string name = lock_.CurrentName();
    if (name.empty()) result_.loss = "its new name is not known";
    return name;
  }
  result_.was_removed = true;
  ending_->Come(TakeEnd::kRemoved);
  const Rescue rescue = rescue_removed(lock_.fd(), absolute_path_);
  result_.loss = rescue.error;
  return rescue.path;
}

void Part::Send(const char* method, FlValue* args) {
  ++unanswered_;
  engine_->Invoke(method, args, [this](FlMethodResponse* response) {
    --unanswered_;
    if (auto sealed = sealed_capture_in(response)) {
      result_.sealed = std::move(sealed);
    }
    ending_->Fail(error_in(response));
  });
}

void Part::AwaitAnswers() {
  engine_->IterateUntil([this] { return unanswered_ == 0; });
}

// The format is asked for by every method that opens a capture.
FlValue* Part::ArgsWith(const std::string& path) const {
  FlValue* args = fl_value_new_map();
  fl_value_set_string_take(args, "capturePath",
                           fl_value_new_string(path.c_str()));
  fl_value_set_string_take(args, "sampleRate",
                           fl_value_new_int(setup_.format.sample_rate));
  fl_value_set_string_take(args, "channels",
                           fl_value_new_int(setup_.format.channels));
  return args;
}

}  // namespace corvane
