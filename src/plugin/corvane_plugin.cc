// The plugin's one translation unit: the parts in reading order, then the
// GObject type, the two channels and the exported functions. All of it runs on
// the main thread, but for what the parts say of the worker.
#include "corvane/corvane_plugin.h"

#include "report/log_relay.h"     // the log's words, and whether Dart listens
#include "report/native_error.h"  // the record of a failure
#include "report/reply.h"         // what a task answers

#include "adts/frame.h"          // ADTS frames, as written
#include "adts/scan.h"           // ADTS files, as read back
#include "adts/stream_config.h"  // rates and channel configurations

#include "encoder/adts_aac_encoder.h"  // PCM frames to ADTS frames on disk
#include "encoder/format_args.h"       // the format in a call's arguments
#include "encoder/open_encoder.h"      // opening of the codec

#include "worker/capture_session.h"  // the one open capture
#include "worker/open_close.h"       // installing and closing the capture
#include "worker/plugin_state.h"     // the worker, its queue and the way back

#include "finalize/finalize_path.h"      // "finalizePath"
#include "finalize/finalize_wav_only.h"  // "finalizeWavOnly"
#include "finalize/resume_path.h"        // "resumePath"
#include "finalize/seal.h"               // a capture made durable and verified
#include "finalize/trim_torn_tail.h"     // the cut behind the last whole frame

#include "recording/append.h"    // "append"
#include "recording/controls.h"  // "pause", "resume", "stop", "cancel", "flush"
#include "recording/start.h"     // "start", and what it moves aside

#include "plugin/method_table.h"  // calls by name, arguments checked

namespace {

constexpr char kMethodChannelName[] = "com.velka.corvane";
constexpr char kLogChannelName[] = "com.velka.corvane/log";

}  // namespace

struct _CorvanePlugin {
  GObject parent_instance;

  PluginState* state;  // owned; null once disposed
};

G_DEFINE_TYPE(CorvanePlugin, corvane_plugin, G_TYPE_OBJECT)

// The callbacks are noexcept: the embedding's C frames can't be unwound.

static void method_call_cb(FlMethodChannel* /*channel*/, FlMethodCall* call,
                           gpointer data) noexcept {
  dispatch(call, static_cast<CorvanePlugin*>(data)->state);
}

static FlMethodErrorResponse* log_listen_cb(FlEventChannel* /*channel*/,
                                            FlValue* /*args*/,
                                            gpointer user_data) noexcept {
  static_cast<CorvanePlugin*>(user_data)->state->log_relay->listening = true;
  return nullptr;
}

static FlMethodErrorResponse* log_cancel_cb(FlEventChannel* /*channel*/,
                                            FlValue* /*args*/,
                                            gpointer user_data) noexcept {
  static_cast<CorvanePlugin*>(user_data)->state->log_relay->listening = false;
  return nullptr;
}

// The messenger holds a reference on the channel too, and the handlers point to
// the plugin: they go first.
static void close_log_channel(LogRelay* relay) {
  if (relay->channel != nullptr) {
    fl_event_channel_set_stream_handlers(relay->channel, nullptr, nullptr,
                                         nullptr, nullptr);
    g_clear_object(&relay->channel);
  }
}

static void corvane_plugin_dispose(GObject* object) noexcept {
  auto* self = reinterpret_cast<CorvanePlugin*>(object);
  if (self->state != nullptr) {
    self->state->FinishTasks();
    self->state->CloseSession("plugin dispose");
    close_log_channel(self->state->log_relay.get());
    delete self->state;
    self->state = nullptr;
  }
  G_OBJECT_CLASS(corvane_plugin_parent_class)->dispose(object);
}

static void corvane_plugin_class_init(CorvanePluginClass* klass) {
  G_OBJECT_CLASS(klass)->dispose = corvane_plugin_dispose;
}

static void corvane_plugin_init(CorvanePlugin* self) {
  self->state = new PluginState();
}

static FlEventChannel* open_log_channel(FlBinaryMessenger* messenger,
                                        FlMethodCodec* codec,
                                        CorvanePlugin* plugin) {
  FlEventChannel* channel =
      fl_event_channel_new(messenger, kLogChannelName, codec);
  fl_event_channel_set_stream_handlers(channel, log_listen_cb, log_cancel_cb,
                                       plugin, nullptr);
  return channel;
}

void corvane_plugin_register_with_registrar(FlPluginRegistrar* registrar) {
  auto* plugin = static_cast<CorvanePlugin*>(
      g_object_new(corvane_plugin_get_type(), nullptr));
  FlBinaryMessenger* messenger = fl_plugin_registrar_get_messenger(registrar);
  g_autoptr(FlStandardMethodCodec) codec = fl_standard_method_codec_new();

  // The messenger keeps the channel, and the channel's handler the plugin.
  g_autoptr(FlMethodChannel) channel = fl_method_channel_new(
      messenger, kMethodChannelName, FL_METHOD_CODEC(codec));
  fl_method_channel_set_method_call_handler(
      channel, method_call_cb, g_object_ref(plugin), g_object_unref);
  plugin->state->log_relay->channel =
      open_log_channel(messenger, FL_METHOD_CODEC(codec), plugin);
  g_object_unref(plugin);
}
