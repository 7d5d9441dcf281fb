#include "crash/take.h"

#include <utility>

#include "support/pcm.h"

namespace corvane_test {
namespace {

Value ArgsOf(const Take& take) {
  return Value::Map({{"capturePath", take.path},
                     {"outputPath", take.path},
                     {"wavPath", take.path},
                     {"sampleRate", take.rate},
                     {"channels", take.channels}});
}

// No more than the take will append.
Bytes PcmFor(const Take& take) {
  size_t frames = 0;
  for (const std::string& step : take.steps) frames += AppendedBy(step);
  return Noise(frames, take.channels);
}

}  // namespace

TakeRunner::TakeRunner(const Take& take, Caller call)
    : take_(take), call_(std::move(call)), pcm_(PcmFor(take)) {}

Reply TakeRunner::Run(const std::string& step) {
  const int frames = AppendedBy(step);
  if (frames == 0) return call_(step.c_str(), ArgsOf(take_));
  const size_t bytes = static_cast<size_t>(frames) * take_.channels * 2;
  const size_t from = std::exchange(at_, at_ + bytes);
  return call_("append", Slice(pcm_, from, bytes));
}

void TakeRunner::RunAll() {
  for (const std::string& step : take_.steps) Run(step);
}

int AppendedBy(const std::string& step) {
  const std::string prefix = "append=";
  return step.rfind(prefix, 0) == 0 ? std::stoi(step.substr(prefix.size())) : 0;
}

}  // namespace corvane_test
