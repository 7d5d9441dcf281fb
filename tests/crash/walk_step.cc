#include "crash/walk_step.h"

#include <array>

namespace corvane_test {
namespace {

// In the order of Do.
constexpr std::array<const char*, 18> kNames = {
    "kStart",           "kAppend",     "kPause",
    "kResume",          "kStop",       "kCancel",
    "kFlush",           "kResumePath", "kFinalizePath",
    "kFinalizeWavOnly", "kUnknown",    "kBadCall",
    "kRestart",         "kTear",       "kLitter",
    "kForeignFile",     "kFolder",     "kRemove"};

// How many times in a hundred each comes up, in the same order: appends often
// enough that takes grow, and hardly a step that ends everything.
constexpr std::array<int, kNames.size()> kWeights = {
    12, 30, 5, 6, 6, 3, 3, 9, 5, 2, 1, 4, 2, 5, 3, 2, 1, 1};

Do RandomDo(Chance* chance) {
  int left = chance->Between(1, 100);
  size_t i = 0;
  while (i + 1 < kWeights.size() && left > kWeights[i]) left -= kWeights[i++];
  return static_cast<Do>(i);
}

}  // namespace

std::string ToString(const Walk& walk) {
  std::string text = "  Hold({";
  for (const Step& step : walk) {
    text += "{Do::" + std::string(kNames[static_cast<size_t>(step.what)]) +
            ", " + std::to_string(step.path) + ", " +
            std::to_string(step.rate) + ", " + std::to_string(step.channels) +
            ", " + std::to_string(step.count) + "},\n        ";
  }
  return text + "});";
}

Step RandomStep(Chance* chance) {
  constexpr std::array<int, 3> kRates = {48000, 44100, 16000};
  constexpr std::array<int, 3> kChannels = {1, 2, 6};
  const int last_path = static_cast<int>(kWalkPaths.size()) - 1;
  Step step{RandomDo(chance)};
  // The first path takes half of all, so that things happen to it.
  step.path = chance->OneIn(2) ? 0 : chance->Between(0, last_path);
  step.rate = kRates[chance->Between(0, 2)];
  step.channels = kChannels[chance->Between(0, 2)];
  switch (step.what) {
    case Do::kAppend:
      step.count =
          chance->OneIn(8) ? chance->Between(0, 5) : chance->Between(0, 20000);
      break;
    case Do::kFinalizePath:
      step.count = chance->OneIn(4) ? chance->Between(0, last_path) : step.path;
      break;
    case Do::kBadCall:
      step.count = chance->Between(0, static_cast<int>(BadCalls().size()) - 1);
      break;
    case Do::kTear:
    case Do::kLitter:
      step.count = chance->Between(1, 40);
      break;
    case Do::kForeignFile:
      step.count = chance->Between(1, 200);
      break;
    default:
      break;
  }
  return step;
}

std::vector<BadCall> BadCalls() {
  const Value args = Value::Map({{"capturePath", "a.aac"},
                                 {"outputPath", "a.aac"},
                                 {"wavPath", "a.aac"},
                                 {"sampleRate", 48000},
                                 {"channels", 2}});
  return {
      {"start", Value(), InvalidArgs("start requires capturePath")},
      {"start", args.With("capturePath", ""),
       InvalidArgs("start requires capturePath")},
      {"start", args.With("bitRate", Value::Null()),
       InvalidArgs("start bitRate must be a positive int")},
      {"start", args.With("sampleRate", 44100.0),
       InvalidArgs("start requires positive int sampleRate and channels")},
      {"append", "text", InvalidArgs("append requires Uint8List")},
      {"resumePath", args.Without("capturePath"),
       InvalidArgs("resumePath requires capturePath")},
      {"resumePath", args.With("sampleRate", 44000),
       PlainError("UNSUPPORTED_FORMAT", "ADTS has no index for 44000 Hz")},
      {"finalizePath", args.Without("outputPath"),
       InvalidArgs("finalizePath requires capturePath, outputPath")},
      {"finalizePath", args.With("channels", 7),
       PlainError("UNSUPPORTED_FORMAT", "ADTS cannot express 7 channels")},
      {"finalizeWavOnly", args.With("channels", 0),
       InvalidArgs("finalizeWavOnly requires wavPath, sampleRate, channels")},
  };
}

Bytes Foreign(int count) {
  Bytes bytes;
  for (int i = 0; i < count; ++i) bytes.push_back('A' + i % 26);
  return bytes;
}

}  // namespace corvane_test
