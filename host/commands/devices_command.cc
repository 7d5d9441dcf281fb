#include "commands/devices_command.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "audio/sound_devices.h"
#include "terminal/exit_status.h"
#include "terminal/json_output.h"
#include "terminal/waiting_line.h"

namespace corvane {
namespace {

constexpr size_t kWidestColumn = 32;

constexpr char kConsolation[] =
    "run it again where standard output can be "
    "written";

Json json_of(const std::vector<SoundDevice>& devices) {
  Json list = Json::array();
  for (const SoundDevice& device : devices) {
    list.push_back({{"name", device.name},
                    {"description", device.description},
                    {"isDefault", device.is_default}});
  }
  return list;
}

// The names stand below each other, unless one is very long.
size_t column_of(const std::vector<SoundDevice>& devices) {
  size_t widest = 0;
  for (const SoundDevice& device : devices) {
    widest = std::max(widest, printable(device.name).size());
  }
  return std::min(widest, kWidestColumn);
}

std::string line_of(const SoundDevice& device, size_t column) {
  std::string name = printable(device.name);
  if (name.size() < column) name.resize(column, ' ');
  return (device.is_default ? "* " : "  ") + name + "  " +
         printable(device.description);
}

bool print_lines(const std::vector<SoundDevice>& devices, Console* console) {
  const size_t column = column_of(devices);
  for (const SoundDevice& device : devices) {
    std::printf("%s\n", line_of(device, column).c_str());
  }
  if (std::ferror(stdout) == 0 && std::fflush(stdout) == 0) return true;
  console->Complain("the list could not be written to standard output");
  return false;
}

// Each is opened, and a sound server may take its time.
std::vector<SoundDevice> look_patiently(Console* console) {
  const WaitingLine waiting(console, "looking for sound devices");
  return list_sound_devices();
}

}  // namespace

int run_devices(bool as_json, Console* console) {
  const std::vector<SoundDevice> devices = look_patiently(console);
  if (devices.empty()) {
    console->Note(
        "there is nothing to record from; plug a microphone or a sound card "
        "in, or start the sound server");
  }
  const bool printed = as_json
                           ? print_json(json_of(devices), kConsolation, console)
                           : print_lines(devices, console);
  return printed ? kExitDone : kExitFailed;
}

}  // namespace corvane
