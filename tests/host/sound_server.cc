#include "host/sound_server.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>

namespace corvane_test {
namespace {

// What the system's configuration would add, such as a device of its own, stays
// away. The server is its own process group, so that it ends as a whole.
constexpr char kPulseAudio[] = R"(
exec setsid pulseaudio -n --daemonize=no --exit-idle-time=-1 --log-level=info \
  -L "module-native-protocol-unix" \
  -L "module-null-sink sink_name=stage rate=48000 channels=1 format=s16le"
)";

// It needs a message bus, and a session manager to connect its clients.
constexpr char kPipeWire[] = R"(
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

SoundServer::SoundServer(ServerKind kind) {
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
  ChildSetup setup;
  setup.environment = environment_;
  // Its clients' variable, which a server takes for another server.
  if (kind == ServerKind::kPulseAudio) setup.environment["PULSE_SERVER"] = "";
  server_ = std::make_unique<Child>(
      std::vector<std::string>{
          "/bin/sh", "-c",
          kind == ServerKind::kPulseAudio ? kPulseAudio : kPipeWire},
      setup);
  server_->AwaitError("Daemon startup complete.");
}

std::unique_ptr<Child> SoundServer::Play(const std::string& path) {
  ChildSetup setup;
  setup.environment = environment_;
  return std::make_unique<Child>(
      std::vector<std::string>{"/usr/bin/pacat", "--playback", "--device=stage",
                               "--raw", "--format=s16le", "--rate=48000",
                               "--channels=1", path},
      setup);
}

void SoundServer::Kill() { kill(-server_->pid(), SIGKILL); }

}  // namespace corvane_test
