// A real sound server of the test's own, without hardware: a stage on which
// sound is played, and whose own sound is what a microphone would hear.
#ifndef CORVANE_TESTS_HOST_SOUND_SERVER_H_
#define CORVANE_TESTS_HOST_SOUND_SERVER_H_

#include <map>
#include <memory>
#include <string>

#include "host/child_process.h"
#include "support/files.h"

namespace corvane_test {

enum class ServerKind { kPulseAudio, kPipeWire };

class SoundServer {
 public:
  // It doesn't run yet.
  explicit SoundServer(ServerKind kind);
  ~SoundServer() { Kill(); }

  // Starts it, again if it was ended.
  void Start();
  // Returns when it takes clients, and fails the test if it never does. The
  // stage is mono at 48000 Hz.
  void AwaitReady() { server_->AwaitError("Daemon startup complete."); }

  // For its clients; ALSA's default device is the stage.
  const std::map<std::string, std::string>& environment() const {
    return environment_;
  }

  // Plays raw s16le on the stage, which is given it so many seconds ahead: a
  // player that the machine keeps waiting for longer leaves a gap. What is
  // returned ends with it.
  std::unique_ptr<Child> Play(const std::string& path, int ahead_s);

  // Ends it, as if it had crashed.
  void Kill();
  // Has it end by itself, and returns when it has.
  void Stop();

 private:
  const ServerKind kind_;
  TempDir dir_;
  std::map<std::string, std::string> environment_;
  std::unique_ptr<Child> server_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SOUND_SERVER_H_
