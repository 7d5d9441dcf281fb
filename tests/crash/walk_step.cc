#include "crash/walk_step.h"

#include <array>

#include "support/pcm.h"

namespace corvane_test {
namespace {

// In the order of Do.
constexpr std::array<const char*, 20> kNames = {
    "kStart",           "kAppend",     "kPause",
    "kResume",          "kStop",       "kCancel",
    "kFlush",           "kResumePath", "kFinalizePath",
    "kFinalizeWavOnly", "kUnknown",    "kBadCall",
    "kRestart",         "kTear",       "kLitter",
    "kForeignFile",     "kFolder",     "kRemove",
    "kFillSlots",       "kKill"};

// How many times in a hundred each comes up, in the same order: appends often
// enough that takes grow, and hardly a step that ends everything.
constexpr std::array<int, kNames.size()> kWeights = {
    11, 28, 5, 5, 5, 3, 3, 9, 5, 2, 1, 3, 2, 4, 3, 2, 1, 1, 1, 6};

// Calls that a kill may find unanswered, at most.
constexpr size_t kUnanswered = 6;
constexpr int kMaxChunk = 20000;

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
            ", " + std::to_string(step.count) + ", " +
            std::to_string(step.bytes) + "},\n        ";
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
      step.count = chance->Between(0, chance->OneIn(8) ? 5 : kMaxChunk);
      break;
    case Do::kFinalizePath:
      step.count = chance->OneIn(4) ? chance->Between(0, last_path) : step.path;
      break;
    case Do::kBadCall:
      step.count = chance->Between(0, static_cast<int>(BadCalls().size()) - 1);
      break;
    case Do::kTear:
    case Do::kLitter:
      // Inside a frame mostly, now and then through several.
      step.count = chance->Between(1, chance->OneIn(8) ? 1000 : 40);
      break;
    case Do::kForeignFile:
      step.count = chance->Between(1, 200);
      break;
    case Do::kFillSlots:
      step.count = chance->OneIn(4) ? chance->Between(1, 2) : 0;
      break;
    case Do::kKill:
      step.bytes = chance->OneIn(3) ? chance->Between(1, 150) : 0;
      step.count = chance->OneIn(5)   ? 0
                   : chance->OneIn(4) ? chance->Between(1, 60)
                                      : chance->Between(1, 5);
      break;
    default:
      break;
  }
  return step;
}

Walk CallsBehind(const Walk& walk, size_t kill) {
  Walk calls;
  for (size_t i = kill + 1; i < walk.size() && calls.size() < kUnanswered;
       ++i) {
    // Only an unknown method is answered out of turn.
    if (walk[i].what >= Do::kUnknown && walk[i].what != Do::kBadCall) break;
    calls.push_back(walk[i]);
  }
  return calls;
}

const char* MethodOf(const Step& step) {
  // In the order of Do.
  constexpr std::array<const char*, 11> kMethods = {
      "start",        "append",          "pause",  "resume",
      "stop",         "cancel",          "flush",  "resumePath",
      "finalizePath", "finalizeWavOnly", "explode"};
  return step.what == Do::kBadCall ? BadCalls()[step.count].method
                                   : kMethods[static_cast<size_t>(step.what)];
}

Value ArgsOf(const Step& step) {
  static const Bytes pcm = Noise(kMaxChunk);
  if (step.what == Do::kAppend) return Slice(pcm, 0, step.count);
  if (step.what == Do::kBadCall) return BadCalls()[step.count].args;
  const std::string& path = kWalkPaths[step.path];
  return Value::Map(
      {{"capturePath", path},
       {"wavPath", path},
       {"outputPath",
        step.what == Do::kFinalizePath ? kWalkPaths[step.count] : path},
       {"sampleRate", step.rate},
       {"channels", step.channels}});
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
