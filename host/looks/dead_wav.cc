#include "looks/dead_wav.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "audio/file_kind.h"
#include "looks/regular_file.h"
#include "looks/wav_look.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int64_t kFirstChunk = 12;  // behind "RIFF", its size, and "WAVE"
constexpr ptrdiff_t kCanonicalAudio = 36;  // the audio's chunk, in most files
constexpr int64_t kChunkHeaderSize = 8;
// Enough for any real file, few enough for a maze of empty chunks.
constexpr int kMostChunks = 1000;
// Bytes. What is shorter may be a tag that some program has put behind the
// chunks.
constexpr int64_t kShortestLoss = 4096;

// What writers name that don't know the length yet; 2 GiB is more than most of
// them would write.
constexpr int64_t kLeastOpenSize = 0x7FFF0000;

struct Audio {
  int64_t begin = 0;  // offset in the file
  int64_t named = 0;  // bytes, by its chunk's header
};

std::optional<Audio> find_audio(const RegularFile& file) {
  int64_t position = kFirstChunk;
  for (int chunks = 0; chunks < kMostChunks; ++chunks) {
    const std::vector<uint8_t> chunk = file.Read(position, kChunkHeaderSize);
    if (chunk.size() < kChunkHeaderSize) return std::nullopt;
    const int64_t size = value_of({"size", 4, 4}, chunk);
    position += kChunkHeaderSize;
    if (std::string_view(reinterpret_cast<const char*>(chunk.data()), 4) ==
        "data") {
      return Audio{position, size};
    }
    position += size + size % 2;
  }
  return std::nullopt;
}

std::string way_to_repair(const std::string& path, const RegularFile& file) {
  const WavObjection objection = objection_to_repair(file);
  return objection.has_audio && !objection.reason.empty()
             ? "save its audio first with: " + way_to_save_wav(path)
             : "repair it first with: corvane repair-wav " + shell_word(path);
}

// Whether there are zeros where the header should begin, or go on with the
// audio's chunk.
bool is_unwritten(const WavStart& start) {
  const ptrdiff_t from = kind_of(start) == kKindWav ? kCanonicalAudio : 0;
  return start.size() == kWavHeaderSize &&
         std::all_of(start.begin() + from, start.end(),
                     [](uint8_t byte) { return byte == 0; });
}

}  // namespace

std::string objection_to_dead_wav(const std::string& path) {
  const RegularFile file(path);
  if (!file.error().empty()) return "";
  const WavStart start = file.Read(0, kWavHeaderSize);
  if (is_unwritten(start) && file.size() > int64_t{kWavHeaderSize}) {
    return "there are zeros where a WAV file has its header; if its recorder "
           "died, repair it first with: corvane repair-wav " +
           shell_word(path) + (format_in(start) ? "" : " -r HZ -c N");
  }
  if (kind_of(start) != kKindWav) return "";
  const std::optional<Audio> audio = find_audio(file);
  if (!audio) return "";
  const int64_t held = file.size() - audio->begin;
  const int64_t end = audio->begin + audio->named + audio->named % 2;
  const int64_t hidden = file.size() - end;
  if (hidden < (audio->named == 0 ? 1 : kShortestLoss) ||
      chunk_bytes_from(end, file) > 0) {
    return "";
  }
  return "its header names " + std::to_string(audio->named) + " of the " +
         counted(held, "byte") +
         " of audio in it, as when its recorder died; " +
         way_to_repair(path, file);
}

std::string shortage_of_wav(const std::string& path) {
  const RegularFile file(path);
  if (!file.error().empty()) return "";
  if (kind_of(file.Read(0, kWavHeaderSize)) != kKindWav) return "";
  const std::optional<Audio> audio = find_audio(file);
  if (!audio || audio->named >= kLeastOpenSize) return "";
  const int64_t held = file.size() - audio->begin;
  if (audio->named <= held) return "";
  return "of the " + counted(audio->named, "byte") +
         " of audio that its header names, " + std::to_string(held) +
         " are there: it was cut short, or is still being written";
}

}  // namespace corvane
