#include "faults/sweep_strike.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <sstream>

namespace corvane_test {
namespace {

// An interrupted call that is rightly made again would never end otherwise.
constexpr int kInterruptions = 20;

// Of a write that is cut short: a frame's header and some payload.
constexpr int kHalf = 10;

constexpr std::array<const char*, 4> kHowNames = {"once", "good", "half",
                                                  "half-good"};

bool IsForGood(const Strike& strike) {
  return strike.how == Strike::How::kForGood ||
         strike.how == Strike::How::kHalfForGood;
}

bool IsHalf(const Strike& strike) {
  return strike.how == Strike::How::kHalfOnce ||
         strike.how == Strike::How::kHalfForGood;
}

}  // namespace

const std::vector<SweepErrno>& SweepErrnos() {
  static const std::vector<SweepErrno> all = {
      {ENOSPC, "ENOSPC"}, {EIO, "EIO"},       {EINTR, "EINTR"},
      {EACCES, "EACCES"}, {EMFILE, "EMFILE"}, {0, "0"}};
  return all;
}

std::string ToString(const Strike& strike) {
  std::string error = std::to_string(strike.error);
  for (const SweepErrno& each : SweepErrnos()) {
    if (each.number == strike.error) error = each.name;
  }
  return strike.call + " " + std::to_string(strike.nth) + " " + error + " " +
         kHowNames[static_cast<size_t>(strike.how)];
}

Strike ParseStrike(const std::string& text) {
  Strike strike;
  std::string error;
  std::string how;
  std::istringstream words(text);
  words >> strike.call >> strike.nth >> error >> how;
  for (const SweepErrno& each : SweepErrnos()) {
    if (each.name == error) strike.error = each.number;
  }
  for (size_t i = 0; i < kHowNames.size(); ++i) {
    if (how == kHowNames[i]) strike.how = static_cast<Strike::How>(i);
  }
  if (ToString(strike) != text) {
    std::cerr << "no injection: " << text << "\n";
    exit(2);
  }
  return strike;
}

bool FailsWithNull(const std::string& name) {
  return name == "avcodec_find_encoder_by_name" ||
         name == "avcodec_alloc_context3" || name == "av_frame_alloc" ||
         name == "av_packet_alloc" || name == "fopen" || name == "getcwd";
}

bool HasFailed(const PluginCall& call) {
  if (FailsWithNull(call.name)) return call.result == 0;
  if (call.name == std::string("fwrite")) return call.result < call.wanted;
  return call.result < 0;
}

Injection::Injection(const Strike& strike)
    : tap_(OnEverything()
               .After([this](PluginCall& call) { Record(call); })
               .MayMiss()) {
  if (strike.nth == 0) return;
  failure_.emplace(Failure(strike));
  if (IsHalf(strike)) {
    half_.emplace(On("write").Nth(strike.nth).Accept(kHalf));
  }
}

Rule Injection::Failure(const Strike& strike) {
  const int first = strike.nth + (IsHalf(strike) ? 1 : 0);
  Rule rule = On(strike.call).From(first).Fail(strike.error);
  if (!IsForGood(strike)) {
    rule.Times(1);
  } else if (strike.error == EINTR) {
    rule.Times(kInterruptions);
  }
  return rule.MayMiss().Before(
      [this](PluginCall& call) { ++struck_[call.name]; });
}

void Injection::Record(const PluginCall& call) {
  SweptCall swept;
  static_cast<PluginCall&>(swept) = call;
  if (call.data != nullptr && call.result > 0) {
    const auto* bytes = static_cast<const uint8_t*>(call.data);
    swept.written.assign(bytes, bytes + call.result);
  }
  if (call.status != nullptr && call.result == 0) {
    swept.file_size = call.status->st_size;
  }
  calls_.push_back(std::move(swept));
}

}  // namespace corvane_test
