#include "engine/engine.h"

#include <corvane/corvane_plugin.h>

#include <utility>

#include "engine/registrar.h"

namespace corvane {
namespace {

constexpr char kMethodChannel[] = "com.velka.corvane";
constexpr char kLogChannel[] = "com.velka.corvane/log";

// Only a custom value cannot be encoded, and no caller here makes one.
GBytes* encode_call(FlMethodCodec* codec, const char* method, FlValue* args) {
  g_autoptr(GError) error = nullptr;
  GBytes* message = FL_METHOD_CODEC_GET_CLASS(codec)->encode_method_call(
      codec, method, args, &error);
  if (message == nullptr) {
    g_error("the call of %s cannot be encoded: %s", method, error->message);
  }
  return message;
}

// "Not implemented" travels as no bytes at all, which the codec does not take.
FlMethodResponse* decode_reply(FlMethodCodec* codec, GBytes* reply) {
  if (reply == nullptr || g_bytes_get_size(reply) == 0) {
    return FL_METHOD_RESPONSE(fl_method_not_implemented_response_new());
  }
  g_autoptr(GError) error = nullptr;
  FlMethodResponse* response =
      FL_METHOD_CODEC_GET_CLASS(codec)->decode_response(codec, reply, &error);
  if (response == nullptr) {
    g_error("the plugin's answer cannot be decoded: %s", error->message);
  }
  return response;
}

}  // namespace

Engine::Engine()
    : codec_(FL_METHOD_CODEC(fl_standard_method_codec_new())),
      messenger_(messenger_new()) {
  if (!g_main_context_acquire(nullptr)) {
    g_error("another thread owns the default main context");
  }
  messenger_set_outgoing(messenger_,
                         [this](const char* channel, GBytes* message) {
                           OnOutgoing(channel, message);
                         });
  g_autoptr(FlPluginRegistrar) registrar = registrar_new(messenger_);
  corvane_plugin_register_with_registrar(registrar);
}

Engine::~Engine() {
  Shutdown();
  g_object_unref(messenger_);
  g_object_unref(codec_);
  g_main_context_release(nullptr);
}

void Engine::Shutdown() { messenger_shutdown(messenger_); }

void Engine::Invoke(const char* method, FlValue* args,
                    ResponseHandler on_response) {
  g_autoptr(GBytes) message = encode_call(codec_, method, args);
  SendRaw(kMethodChannel, message,
          [this, on_response = std::move(on_response)](GBytes* reply) {
            g_autoptr(FlMethodResponse) response = decode_reply(codec_, reply);
            if (on_response) on_response(response);
          });
}

void Engine::SendRaw(const char* channel, GBytes* message,
                     ReplyHandler on_reply) {
  messenger_deliver(messenger_, channel, message, std::move(on_reply));
}

void Engine::ListenToLog(LogHandler on_line) {
  on_line_ = std::move(on_line);
  g_autoptr(GBytes) message = encode_call(codec_, "listen", nullptr);
  SendRaw(kLogChannel, message, nullptr);
}

// The handler stays: it is the plugin that has to fall silent.
void Engine::CancelLog() {
  g_autoptr(GBytes) message = encode_call(codec_, "cancel", nullptr);
  SendRaw(kLogChannel, message, nullptr);
}

void Engine::OnOutgoing(const char* channel, GBytes* message) {
  if (message == nullptr || !on_line_ || !g_str_equal(channel, kLogChannel)) {
    return;
  }
  g_autoptr(FlMethodResponse) event = decode_reply(codec_, message);
  FlValue* line = fl_method_response_get_result(event, nullptr);
  if (line == nullptr || fl_value_get_type(line) != FL_VALUE_TYPE_MAP) return;
  FlValue* level = fl_value_lookup_string(line, "level");
  FlValue* text = fl_value_lookup_string(line, "message");
  if (level == nullptr || text == nullptr) return;
  on_line_(fl_value_get_string(level), fl_value_get_string(text));
}

void Engine::IterateUntil(const std::function<bool()>& done) {
  while (!done()) g_main_context_iteration(nullptr, TRUE);
}

}  // namespace corvane
