#include "identity/ffmpeg_command.h"

#include <cstdlib>
#include <string>

#include "support/files.h"

namespace corvane_test {
namespace {

std::string InputName(const TempDir& dir, size_t i) {
  return dir.Path("in" + std::to_string(i) + ".pcm");
}

std::string OutputName(const TempDir& dir, size_t i) {
  return dir.Path("out" + std::to_string(i) + ".aac");
}

// Runs ffmpeg once over all takes; true when it took them all.
bool Run(const TempDir& dir, const std::vector<Take>& takes) {
  std::string inputs;
  std::string outputs;
  for (size_t i = 0; i < takes.size(); ++i) {
    WriteFile(InputName(dir, i), takes[i].pcm);
    inputs += " -f s16le -ar " + std::to_string(takes[i].rate) + " -ac " +
              std::to_string(takes[i].channels) + " -i " + InputName(dir, i);
    outputs += " -map " + std::to_string(i) + " -c:a aac -b:a " +
               std::to_string(takes[i].bit_rate) + " -f adts " +
               OutputName(dir, i);
  }
  const std::string command = "ffmpeg -nostdin -v error -y" + inputs + outputs +
                              " 2>" + dir.Path("messages");
  return std::system(command.c_str()) == 0;
}

}  // namespace

std::vector<std::optional<Bytes>> EncodedByFfmpeg(
    const std::vector<Take>& takes) {
  const TempDir dir;
  std::vector<std::optional<Bytes>> files;
  if (Run(dir, takes)) {
    for (size_t i = 0; i < takes.size(); ++i) {
      files.emplace_back(ReadFile(OutputName(dir, i)));
    }
  } else if (takes.size() == 1) {
    files.emplace_back(std::nullopt);
  } else {
    for (const Take& take : takes) files.push_back(EncodedByFfmpeg({take})[0]);
  }
  return files;
}

}  // namespace corvane_test
