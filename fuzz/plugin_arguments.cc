// The argument checks of the methods, once more from their description.
#include <climits>
#include <filesystem>
#include <string>

#include "adts/stream_config.h"
#include "plugin_judge.h"
#include "support/naive_path.h"

namespace corvane_fuzz {
namespace {

using corvane_test::Do;
using corvane_test::FileError;
using corvane_test::InvalidArgs;
using corvane_test::PlainError;
using corvane_test::Reply;
using corvane_test::Step;

FlValue* Entry(FlValue* args, const char* key) {
  if (fl_value_get_type(args) != FL_VALUE_TYPE_MAP) return nullptr;
  return fl_value_lookup_string(args, key);
}

// Empty where the key holds no path.
std::string PathIn(FlValue* args, const char* key) {
  FlValue* value = Entry(args, key);
  const bool is_text =
      value != nullptr && fl_value_get_type(value) == FL_VALUE_TYPE_STRING;
  return is_text ? fl_value_get_string(value) : "";
}

std::optional<int64_t> IntIn(FlValue* args, const char* key) {
  FlValue* value = Entry(args, key);
  const bool is_int =
      value != nullptr && fl_value_get_type(value) == FL_VALUE_TYPE_INT;
  if (!is_int) return std::nullopt;
  return fl_value_get_int(value);
}

bool IsPositiveInt32(std::optional<int64_t> number) {
  return number && *number >= 1 && *number <= INT32_MAX;
}

bool HasRateAndChannels(FlValue* args) {
  return IsPositiveInt32(IntIn(args, "sampleRate")) &&
         IsPositiveInt32(IntIn(args, "channels"));
}

bool HasAdtsRate(int64_t rate) {
  for (const int32_t known : adts::kSamplingFrequencies) {
    if (known == rate) return true;
  }
  return false;
}

std::optional<Reply> FormatRefusal(const std::string& method, FlValue* args) {
  if (!HasRateAndChannels(args)) {
    return InvalidArgs(method +
                       " requires positive int sampleRate and channels");
  }
  if (Entry(args, "bitRate") != nullptr &&
      IntIn(args, "bitRate").value_or(0) < 1) {
    return InvalidArgs(method + " bitRate must be a positive int");
  }
  const int64_t rate = *IntIn(args, "sampleRate");
  const int64_t channels = *IntIn(args, "channels");
  if (!HasAdtsRate(rate)) {
    return PlainError("UNSUPPORTED_FORMAT",
                      "ADTS has no index for " + std::to_string(rate) + " Hz");
  }
  if (channels > 6) {
    return PlainError(
        "UNSUPPORTED_FORMAT",
        "ADTS cannot express " + std::to_string(channels) + " channels");
  }
  return std::nullopt;
}

std::optional<Reply> OutputRefusal(FlValue* args) {
  const std::string cwd = std::filesystem::current_path().string();
  const std::string capture = PathIn(args, "capturePath");
  const std::string output = PathIn(args, "outputPath");
  if (corvane_test::NaiveNormalize(capture, cwd) ==
      corvane_test::NaiveNormalize(output, cwd)) {
    return std::nullopt;
  }
  return FileError("INVALID_ARGS",
                   "ADTS capture is its own deliverable; outputPath " + output +
                       " must equal capturePath",
                   capture);
}

std::optional<Do> DoOf(const std::string& method) {
  for (int i = 0; i <= static_cast<int>(Do::kFinalizeWavOnly); ++i) {
    const Step step{static_cast<Do>(i)};
    if (method == MethodOf(step)) return step.what;
  }
  return std::nullopt;
}

// The number of a path among those of the walk.
std::optional<int> WalkPath(const std::string& path) {
  const auto& known = corvane_test::kWalkPaths;
  for (size_t i = 0; i < known.size(); ++i) {
    if (known[i] == path) return static_cast<int>(i);
  }
  return std::nullopt;
}

// With other layouts the encoder has more to say than the model knows.
bool IsWalkLayout(int64_t channels) {
  return channels == 1 || channels == 2 || channels == 6;
}

// Adds path and format; false where the walk knows none such.
bool AddPathAndFormat(FlValue* args, Step* step) {
  const bool is_wav = step->what == Do::kFinalizeWavOnly;
  const auto path = WalkPath(PathIn(args, is_wav ? "wavPath" : "capturePath"));
  const int64_t rate = *IntIn(args, "sampleRate");
  const int64_t channels = *IntIn(args, "channels");
  const bool plain =
      is_wav ? rate * channels * 2 <= INT_MAX
             : Entry(args, "bitRate") == nullptr && IsWalkLayout(channels);
  if (!path || !plain) return false;
  step->path = *path;
  step->rate = static_cast<int>(rate);
  step->channels = static_cast<int>(channels);
  return true;
}

}  // namespace

bool IsConfined(const Message& message) {
  for (const char* key : {"capturePath", "outputPath", "wavPath"}) {
    const std::string path = PathIn(message.args(), key);
    if (path.rfind('/', 0) == 0) return false;
    for (const auto& part : std::filesystem::path(path)) {
      if (part == "..") return false;
    }
  }
  return true;
}

std::optional<Reply> RefusalOf(const Message& message) {
  const auto what = DoOf(message.method());
  FlValue* args = message.args();
  if (!what) return corvane_test::NotImplemented();
  switch (*what) {
    case Do::kAppend:
      if (fl_value_get_type(args) == FL_VALUE_TYPE_UINT8_LIST) break;
      return InvalidArgs("append requires Uint8List");
    case Do::kStart:
    case Do::kResumePath:
      if (PathIn(args, "capturePath").empty()) {
        return InvalidArgs(message.method() + " requires capturePath");
      }
      return FormatRefusal(message.method(), args);
    case Do::kFinalizePath: {
      if (PathIn(args, "capturePath").empty() ||
          PathIn(args, "outputPath").empty()) {
        return InvalidArgs("finalizePath requires capturePath, outputPath");
      }
      const auto refusal = FormatRefusal(message.method(), args);
      return refusal ? refusal : OutputRefusal(args);
    }
    case Do::kFinalizeWavOnly:
      if (!PathIn(args, "wavPath").empty() && HasRateAndChannels(args)) break;
      return InvalidArgs(
          "finalizeWavOnly requires wavPath, sampleRate, channels");
    default:
      break;
  }
  return std::nullopt;
}

std::optional<Step> StepOf(const Message& message) {
  FlValue* args = message.args();
  Step step{*DoOf(message.method())};
  switch (step.what) {
    case Do::kAppend:
      step.count = static_cast<int>(fl_value_get_length(args));
      return step;
    case Do::kFinalizePath: {
      const auto output = WalkPath(PathIn(args, "outputPath"));
      if (!output) return std::nullopt;
      step.count = *output;
      break;
    }
    case Do::kStart:
    case Do::kResumePath:
    case Do::kFinalizeWavOnly:
      break;
    default:
      return step;  // takes no arguments
  }
  if (!AddPathAndFormat(args, &step)) return std::nullopt;
  return step;
}

}  // namespace corvane_fuzz
