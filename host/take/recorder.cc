#include "take/recorder.h"

#include <glib-unix.h>
#include <poll.h>

#include <algorithm>
#include <utility>

namespace corvane {
namespace {

// One event of the main loop, taken off it again when this goes.
class WakeUp {
 public:
  static WakeUp Readable(int fd) {
    const auto conditions =
        static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL);
    return WakeUp(g_unix_fd_source_new(fd, conditions));
  }
  static WakeUp At(int64_t monotonic_us) {
    GSource* source = g_timeout_source_new(0);
    g_source_set_ready_time(source, monotonic_us);
    return WakeUp(source);
  }
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;
  ~WakeUp() {
    g_source_destroy(source_);
    g_source_unref(source_);
  }

  // Destroyed by the main loop once it has come.
  bool has_come() const { return g_source_is_destroyed(source_) != FALSE; }

 private:
  explicit WakeUp(GSource* source) : source_(source) {
    // Its coming is all that counts: any callback that returns FALSE does.
    g_source_set_callback(
        source_, [](gpointer) -> gboolean { return G_SOURCE_REMOVE; }, nullptr,
        nullptr);
    g_source_attach(source_, nullptr);
  }

  GSource* const source_;
};

bool is_readable(int fd) {
  pollfd entry = {fd, POLLIN, 0};
  return poll(&entry, 1, 0) > 0;
}

size_t chunk_size(const PcmFormat& format, int chunk_ms) {
  const int64_t frames =
      static_cast<int64_t>(format.sample_rate) * chunk_ms / 1000;
  return static_cast<size_t>(std::max<int64_t>(frames, 1)) *
         format.bytes_per_frame();
}

}  // namespace

Recorder::Recorder(Engine* engine, AudioSource* source, TakeOptions options,
                   Progress* progress)
    : engine_(engine),
      source_(source),
      options_(std::move(options)),
      progress_(progress),
      bytes_per_frame_(source->format().bytes_per_frame()),
      chunk_(chunk_size(source->format(), options_.chunk_ms)) {}

TakeResult Recorder::Run() {
  Start();
  if (!result_.started) return std::move(result_);
  Feed();
  Seal();
  const auto bytes_per_frame = static_cast<int64_t>(bytes_per_frame_);
  result_.frames = sent_bytes_ / bytes_per_frame;
  result_.leftover_bytes = sent_bytes_ % bytes_per_frame;
  return std::move(result_);
}

void Recorder::Stop() {
  if (ended_) return;
  ended_ = true;
  result_.stopped = true;
}

void Recorder::Start() {
  const PcmFormat format = source_->format();
  g_autoptr(FlValue) args = fl_value_new_map();
  fl_value_set_string_take(args, "capturePath",
                           fl_value_new_string(options_.capture_path.c_str()));
  fl_value_set_string_take(args, "sampleRate",
                           fl_value_new_int(format.sample_rate));
  fl_value_set_string_take(args, "channels", fl_value_new_int(format.channels));
  if (options_.bit_rate) {
    fl_value_set_string_take(args, "bitRate",
                             fl_value_new_int(*options_.bit_rate));
  }
  bool answered = false;
  const char* const method = options_.kept ? "resumePath" : "start";
  engine_->Invoke(method, args, [&](FlMethodResponse* response) {
    answered = true;
    result_.error = error_in(response);
  });
  engine_->IterateUntil([&] { return answered; });
  result_.started = !result_.error;
  start_us_ = g_get_monotonic_time();
}

void Recorder::Feed() {
  while (!ended_) {
    WaitForRoom();
    if (options_.realtime) WaitForTime();
    WaitForInput();
    if (!ended_) AppendChunk();
  }
}

void Recorder::WaitForRoom() {
  engine_->IterateUntil(
      [this] { return ended_ || unanswered_ < kMaxUnanswered; });
}

void Recorder::WaitForTime() {
  const int64_t sent_frames =
      sent_bytes_ / static_cast<int64_t>(bytes_per_frame_);
  const WakeUp due = WakeUp::At(start_us_ + sent_frames * G_USEC_PER_SEC /
                                                source_->format().sample_rate);
  engine_->IterateUntil([&] { return ended_ || due.has_come(); });
}

// Waits in the main loop, so that a signal gets through while no audio comes.
void Recorder::WaitForInput() {
  const int fd = source_->wait_fd();
  if (ended_ || fd < 0 || is_readable(fd)) return;
  const WakeUp readable = WakeUp::Readable(fd);
  engine_->IterateUntil([&] { return ended_ || readable.has_come(); });
}

void Recorder::AppendChunk() {
  const size_t size = source_->Read(chunk_.data(), chunk_.size());
  if (size == 0) {
    ended_ = true;
    return;
  }
  g_autoptr(FlValue) pcm = fl_value_new_uint8_list(chunk_.data(), size);
  sent_bytes_ += static_cast<int64_t>(size);
  ++unanswered_;
  engine_->Invoke("append", pcm, [this, size](FlMethodResponse* response) {
    OnAppended(size, response);
  });
}

void Recorder::OnAppended(size_t size, FlMethodResponse* response) {
  --unanswered_;
  answered_bytes_ += static_cast<int64_t>(size);
  if (auto error = error_in(response); error && !result_.error) {
    result_.error = std::move(error);
    ended_ = true;
  }
  if (progress_ != nullptr) {
    progress_->Update(answered_bytes_ / static_cast<int64_t>(bytes_per_frame_));
  }
}

// Answers come in call order, so every append is answered by then.
void Recorder::Seal() {
  bool answered = false;
  engine_->Invoke("stop", nullptr, [&](FlMethodResponse* response) {
    answered = true;
    result_.sealed = sealed_capture_in(response);
    if (!result_.error) result_.error = error_in(response);
  });
  engine_->IterateUntil([&] { return answered; });
}

}  // namespace corvane
