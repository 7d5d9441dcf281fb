// The skeleton application: `application CAPTURE` registers its plugins as a
// Flutter application does, makes a take of one second over the channels, and
// prints the duration in milliseconds and the bytes that the plugin reports.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "flutter/generated_plugin_registrant.h"
#include "my_application.h"

static_assert(__cplusplus < 201703L, "the plugin's C++17 must not leak out");

namespace {

constexpr char kChannel[] = "com.velka.corvane";
constexpr char kLogChannel[] = "com.velka.corvane/log";
constexpr int kSampleRate = 48000;
constexpr int kAppends = 50;

[[noreturn]] void fail(const char* method, const char* why) {
  std::fprintf(stderr, "%s: %s\n", method, why);
  std::exit(1);
}

// Transfer full. Anything but a success ends the application.
FlMethodResponse* call(MyApplication* app, const char* channel,
                       const char* method, FlValue* args) {
  FlMethodResponse* response = my_application_call(app, channel, method, args);
  if (response == nullptr) fail(method, "no answer");
  g_autoptr(GError) error = nullptr;
  if (fl_method_response_get_result(response, &error) == nullptr) {
    fail(method, error->message);
  }
  return response;
}

FlValue* start_args(const char* capture_path) {
  FlValue* args = fl_value_new_map();
  fl_value_set_string_take(args, "capturePath",
                           fl_value_new_string(capture_path));
  fl_value_set_string_take(args, "sampleRate", fl_value_new_int(kSampleRate));
  fl_value_set_string_take(args, "channels", fl_value_new_int(1));
  return args;
}

FlValue* one_chunk() {
  const std::vector<uint8_t> pcm(kSampleRate / kAppends * sizeof(int16_t), 1);
  return fl_value_new_uint8_list(pcm.data(), pcm.size());
}

void record(MyApplication* app, const char* capture_path) {
  g_object_unref(call(app, kLogChannel, "listen", nullptr));
  g_object_unref(call(app, kChannel, "start", start_args(capture_path)));
  for (int i = 0; i < kAppends; ++i) {
    g_object_unref(call(app, kChannel, "append", one_chunk()));
  }
  g_autoptr(FlMethodResponse) stopped = call(app, kChannel, "stop", nullptr);
  FlValue* figures = fl_method_response_get_result(stopped, nullptr);
  std::printf("%lld %lld\n",
              static_cast<long long>(fl_value_get_int(
                  fl_value_lookup_string(figures, "durationMs"))),
              static_cast<long long>(
                  fl_value_get_int(fl_value_lookup_string(figures, "bytes"))));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) fail("usage", "one argument, the capture to write");
  g_main_context_acquire(nullptr);  // replies arrive on this thread alone
  g_autoptr(MyApplication) app = my_application_new();
  fl_register_plugins(FL_PLUGIN_REGISTRY(app));
  record(app, argv[1]);
  if (my_application_events(app) == 0) fail("log", "not a line arrived");
  my_application_shut_down(app);
}
