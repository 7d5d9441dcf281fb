#include "plugin_driver.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <utility>

#include "fuzzing.h"
#include "support/channel_fixture.h"

namespace corvane_fuzz {
namespace {

using corvane_test::Answer;
using corvane_test::GlibLine;
using corvane_test::Reply;

constexpr char kMethodChannel[] = "com.velka.corvane";
constexpr char kLogChannel[] = "com.velka.corvane/log";

// Keeps what is written to regular files as long as it lives. One at a time,
// and nobody but the plugin may write files meanwhile: telling by the return
// address, as the fault layer does, takes too long for a fuzzer.
class WriteTap {
 public:
  WriteTap() { Current() = this; }
  ~WriteTap() { Current() = nullptr; }
  WriteTap(const WriteTap&) = delete;
  WriteTap& operator=(const WriteTap&) = delete;

  // To be taken while the plugin is idle.
  Bytes Take() { return std::exchange(written_, {}); }

  void Add(int fd, const void* data, size_t size) {
    struct stat status;
    if (fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) return;
    const auto* bytes = static_cast<const uint8_t*>(data);
    written_.insert(written_.end(), bytes, bytes + size);
  }

  static std::atomic<WriteTap*>& Current() {
    static std::atomic<WriteTap*> current{nullptr};
    return current;
  }

 private:
  Bytes written_;
};

FlMethodCodec* Codec() {
  static auto* codec = FL_METHOD_CODEC(fl_standard_method_codec_new());
  return codec;
}

Reply ReplyIn(GBytes* bytes) {
  if (bytes == nullptr || g_bytes_get_size(bytes) == 0) {
    return corvane_test::NotImplemented();
  }
  g_autoptr(FlMethodResponse) response =
      FL_METHOD_CODEC_GET_CLASS(Codec())->decode_response(Codec(), bytes,
                                                          nullptr);
  Require(response != nullptr, "an answer that does not decode");
  return corvane_test::ReadReply(response);
}

}  // namespace

Message::Message(const Bytes& bytes)
    : bytes_(g_bytes_new(bytes.data(), bytes.size())) {
  g_autofree gchar* method = nullptr;
  if (FL_METHOD_CODEC_GET_CLASS(Codec())->decode_method_call(
          Codec(), bytes_, &method, &args_, nullptr)) {
    method_ = method;
  }
}

Message::~Message() {
  if (args_ != nullptr) fl_value_unref(args_);
  g_bytes_unref(bytes_);
}

PluginDriver::PluginDriver() { Register(); }

PluginDriver::~PluginDriver() { Shutdown(); }

void PluginDriver::Register() {
  engine_ = std::make_unique<corvane::Engine>();
  Listen();
}

void PluginDriver::Listen() {
  engine_->ListenToLog(
      [this](const std::string& level, const std::string& message) {
        lines_.push_back(level + ": " + message);
      });
}

Outcome PluginDriver::Call(const Message& message, const std::string& method) {
  Outcome outcome;
  WriteTap tap;
  int answers = 0;
  engine_->SendRaw(kMethodChannel, message.bytes(), [&](GBytes* bytes) {
    outcome.reply = ReplyIn(bytes);
    lines_.push_back(Answer(method, outcome.reply));
    ++answers;
  });
  engine_->IterateUntil([&] { return answers > 0; });
  Require(answers == 1, "answered more than once");
  ExpectQuiet();
  outcome.lines = std::exchange(lines_, {});
  outcome.written = tap.Take();
  return outcome;
}

void PluginDriver::SendBroken(const Message& message) {
  engine_->SendRaw(kMethodChannel, message.bytes(), [](GBytes*) {
    Require(false, "an answer to what cannot be decoded");
  });
  const auto heard = glib_.Take();
  Require(heard.size() == 2 && heard[0].level == G_LOG_LEVEL_WARNING &&
              heard[1].level == G_LOG_LEVEL_CRITICAL,
          "a broken message is not reported once and dropped once");
}

void PluginDriver::SendToLog(const Message& message) {
  int answers = 0;
  engine_->SendRaw(kLogChannel, message.bytes(), [&](GBytes*) { ++answers; });
  Require(answers == 1, "the log's channel did not answer once");
  if (message.decodes()) {
    ExpectQuiet();
  } else {
    Require(glib_.Take().size() == 1, "a broken message is not reported once");
  }
  Listen();
}

Outcome PluginDriver::Restart() {
  Outcome outcome;
  WriteTap tap;
  Shutdown();
  outcome.written = tap.Take();
  outcome.lines = std::exchange(lines_, {});
  Register();
  return outcome;
}

void PluginDriver::Shutdown() {
  engine_.reset();
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  ExpectQuiet();
}

void PluginDriver::ExpectQuiet() {
  for (const GlibLine& line : glib_.Take()) {
    Require(!line.domain && line.message.rfind("[Corvane] ", 0) == 0,
            "GLib reports: " + line.message);
  }
}

}  // namespace corvane_fuzz

// Stands before libc's for every library of the program.
extern "C" ssize_t write(int fd, const void* data, size_t size) {
  const ssize_t count = syscall(SYS_write, fd, data, size);
  corvane_fuzz::WriteTap* tap = corvane_fuzz::WriteTap::Current();
  if (tap != nullptr && count > 0) {
    tap->Add(fd, data, static_cast<size_t>(count));
  }
  return count;
}
