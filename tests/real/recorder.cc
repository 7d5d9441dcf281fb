#include "real/recorder.h"

#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "engine/engine.h"
#include "real/real_fixture.h"

namespace corvane_test {
namespace {

// Makes a call and waits for its answer, whatever it is.
void Call(corvane::Engine* engine, const char* method, const Value& args) {
  bool answered = false;
  engine->Invoke(method, args.get(),
                 [&](FlMethodResponse*) { answered = true; });
  engine->IterateUntil([&] { return answered; });
}

}  // namespace

std::vector<Bytes> RecorderChunks() { return ChunksFor(20); }

int record_until_killed(const std::string& path, size_t limit) {
  g_log_set_default_handler(
      [](const gchar*, GLogLevelFlags, const gchar*, gpointer) {}, nullptr);
  const rlimit no_core = {0, 0};
  const rlimit short_files = {limit, limit};
  setrlimit(RLIMIT_CORE, &no_core);
  setrlimit(RLIMIT_FSIZE, &short_files);
  signal(SIGXFSZ, SIG_DFL);
  corvane::Engine engine;
  Call(&engine, "start", CaptureArgs(path, kRate, 1));
  for (const Bytes& chunk : RecorderChunks()) Call(&engine, "append", chunk);
  Call(&engine, "stop", Value());
  return 0;
}

int RunRecorder(const std::string& path, size_t limit) {
  std::string words[] = {"/proc/self/exe", "--recorder", path,
                         std::to_string(limit)};
  char* const argv[] = {words[0].data(), words[1].data(), words[2].data(),
                        words[3].data(), nullptr};
  pid_t pid = -1;
  int status = -1;
  if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv, environ) != 0 ||
      waitpid(pid, &status, 0) != pid) {
    return -1;
  }
  return status;
}

}  // namespace corvane_test
