#include "faults/sweep_tally.h"

#include <iostream>

namespace corvane_test {
namespace {

// All calls of the plugin that can fail. Memory that cannot be had is outside:
// an allocation that fails ends the process, by design, so only those of libav
// are here, which answer with null.
constexpr const char* kSweptCalls[] = {"open",
                                       "write",
                                       "pread",
                                       "fsync",
                                       "ftruncate",
                                       "fstat",
                                       "stat",
                                       "rename",
                                       "close",
                                       "getcwd",
                                       "fopen",
                                       "fwrite",
                                       "fflush",
                                       "fclose",
                                       "avcodec_find_encoder_by_name",
                                       "avcodec_alloc_context3",
                                       "av_frame_alloc",
                                       "av_packet_alloc",
                                       "avcodec_open2",
                                       "av_channel_layout_copy",
                                       "av_frame_get_buffer",
                                       "av_frame_make_writable",
                                       "avcodec_send_frame",
                                       "avcodec_receive_packet"};

}  // namespace

void SweepTally::Count(const std::map<std::string, int>& struck) {
  ++runs_;
  for (const auto& [name, count] : struck) struck_[name] += count;
}

void SweepTally::TearDown() {
  int all = 0;
  std::string text;
  for (const char* name : kSweptCalls) {
    EXPECT_TRUE(only_ || struck_[name] > 0) << name << " was never struck";
    all += struck_[name];
    text += std::string(text.empty() ? "" : ", ") + name + " " +
            std::to_string(struck_[name]);
  }
  std::cout << "sweep: " << all << " injections in " << runs_
            << " runs: " << text << std::endl;
  for (const NamedSilentFailure& each : kSilentFailures) {
    const int kept = silences_[each.silence];
    EXPECT_TRUE(only_ || kept > 0) << "never called for: " << each.reason;
    std::cout << "sweep: silent " << kept << " times: " << each.reason
              << std::endl;
  }
}

}  // namespace corvane_test
