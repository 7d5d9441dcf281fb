#include "host/slow_plugin.h"

#include <algorithm>

namespace corvane_test {

SlowPlugin::SlowPlugin(corvane::Engine* engine) : engine_(engine) {
  fl_binary_messenger_set_message_handler_on_channel(
      engine->messenger(), "com.velka.corvane", OnMessage, this, nullptr);
  idle_ = g_idle_add(OnIdle, this);
}

SlowPlugin::~SlowPlugin() { g_source_remove(idle_); }

void SlowPlugin::OnMessage(FlBinaryMessenger* /*messenger*/,
                           const gchar* /*channel*/, GBytes* message,
                           FlBinaryMessengerResponseHandle* handle,
                           gpointer self) {
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
  g_autofree gchar* name = nullptr;
  g_autoptr(FlValue) args = nullptr;
  FL_METHOD_CODEC_GET_CLASS(codec)->decode_method_call(
      FL_METHOD_CODEC(codec), message, &name, &args, nullptr);
  static_cast<SlowPlugin*>(self)->Take(name, args, handle);
}

void SlowPlugin::Take(const std::string& name, FlValue* args,
                      FlBinaryMessengerResponseHandle* handle) {
  if (name == "append") {
    ++appends;
    Wait({handle, fl_value_get_length(args), false});
    return;
  }
  if (name == "flush") {
    ++flushes;
    Wait({handle, 0, true});
    return;
  }
  calls.push_back(name);
  while (!waiting_.empty()) AnswerOldest();
  if (name == "start" && on_start_) on_start_();
  Answer(handle, false);
}

void SlowPlugin::Wait(const Waiting& call) {
  g_object_ref(call.handle);
  waiting_.push_back(call);
  size_t bytes = 0;
  size_t waiting_flushes = 0;
  for (const Waiting& each : waiting_) {
    bytes += each.bytes;
    waiting_flushes += each.is_flush ? 1 : 0;
  }
  most_unanswered =
      std::max(most_unanswered, waiting_.size() - waiting_flushes);
  most_unanswered_bytes = std::max(most_unanswered_bytes, bytes);
  most_unanswered_flushes = std::max(most_unanswered_flushes, waiting_flushes);
}

gboolean SlowPlugin::OnIdle(gpointer self) {
  auto* plugin = static_cast<SlowPlugin*>(self);
  if (!plugin->waiting_.empty()) plugin->AnswerOldest();
  return G_SOURCE_CONTINUE;
}

void SlowPlugin::AnswerOldest() {
  const Waiting call = waiting_.front();
  waiting_.pop_front();
  g_autoptr(FlBinaryMessengerResponseHandle) handle = call.handle;
  Answer(handle,
         call.is_flush ? flushes_fail_ : ++answered_ == failing_append_);
}

void SlowPlugin::Answer(FlBinaryMessengerResponseHandle* handle, bool fails) {
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();
  auto* functions = FL_METHOD_CODEC_GET_CLASS(codec);
  g_autoptr(GBytes) reply =
      fails ? functions->encode_error_envelope(FL_METHOD_CODEC(codec),
                                               "WRITE_FAILED", "no room",
                                               nullptr, nullptr)
            : functions->encode_success_envelope(FL_METHOD_CODEC(codec),
                                                 nullptr, nullptr);
  fl_binary_messenger_send_response(engine_->messenger(), handle, reply,
                                    nullptr);
}

}  // namespace corvane_test
