#include "host/sound_server.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

namespace corvane_test {
namespace {

// What the system's configuration would add, such as a device of its own, stays
// away. The server is its own process group, so that it ends as a whole. A sink
// that takes back what it has played already, for a player that joins or comes
// late, has handed part of it to the recorders, and another part is lost to
// them: such a one would make gaps of its own.
constexpr char kPulseAudio[] = R"(
exec setsid pulseaudio -n --daemonize=no --exit-idle-time=-1 --log-level=info \
  -L "module-native-protocol-unix" \
  -L "module-null-sink sink_name=stage rate=48000 channels=1 format=s16le \
    norewinds=1"
)";

// It needs a message bus, and a session manager to connect its clients. A
// socket that a killed one left would be taken for its own.
constexpr char kPipeWire[] = R"(
rm -f "$XDG_RUNTIME_DIR"/pipewire-*
exec setsid dbus-run-session -- sh -c '
  pipewire & until [ -S "$XDG_RUNTIME_DIR/pipewire-0" ]; do sleep 0.02; done
  wireplumber & pipewire-pulse &
  until pactl load-module module-null-sink sink_name=stage rate=48000 \
    channels=1; do sleep 0.05; done
  until pactl set-default-sink stage && pactl get-default-sink |
    grep -qx stage; do sleep 0.05; done
  echo "Daemon startup complete." >&2
  wait'
)";

constexpr char kAlsa[] = R"(
pcm.!default { type pulse device "stage.monitor" }
)";

}  // namespace

SoundServer::SoundServer(ServerKind kind) : kind_(kind) {
  const std::string config = dir_.Path("asound.conf");
  const std::string text = kAlsa;
  WriteFile(config, Bytes(text.begin(), text.end()));
  chmod(dir_.path().c_str(), 0700);
  environment_ = {{"HOME", dir_.path()},
                  {"XDG_RUNTIME_DIR", dir_.path()},
                  {"XDG_CONFIG_HOME", dir_.Path("config")},
                  {"XDG_STATE_HOME", dir_.Path("state")},
                  {"PULSE_RUNTIME_PATH", dir_.Path("pulse")},
                  {"PULSE_SERVER", "unix:" + dir_.Path("pulse/native")},
                  {"ALSA_CONFIG_PATH", config}};
}

void SoundServer::Start() {
  ChildSetup setup;
  setup.environment = environment_;
  // Its clients' variable, which a server takes for another server.
  if (kind_ == ServerKind::kPulseAudio) setup.environment["PULSE_SERVER"] = "";
  server_ = std::make_unique<Child>(
      std::vector<std::string>{
          "/bin/sh", "-c",
          kind_ == ServerKind::kPulseAudio ? kPulseAudio : kPipeWire},
      setup);
}

std::unique_ptr<Child> SoundServer::Play(const std::string& path, int ahead_s) {
  ChildSetup setup;
  setup.environment = environment_;
  return std::make_unique<Child>(
      std::vector<std::string>{
          "/usr/bin/pacat", "--playback", "--device=stage", "--raw",
          "--format=s16le", "--rate=48000", "--channels=1",
          "--latency-msec=" + std::to_string(ahead_s * 1000), path},
      setup);
}

void SoundServer::Kill() {
  if (server_ == nullptr) return;
  kill(-server_->pid(), SIGKILL);
  server_.reset();
}

void SoundServer::Stop() {
  kill(-server_->pid(), SIGTERM);
  server_->Wait();
  server_.reset();
}

}  // namespace corvane_test
