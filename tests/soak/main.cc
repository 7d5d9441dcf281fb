// One take of hours, recorded as fast as the encoder takes it: memory and
// descriptors must stay where they were, and no frame may be missing.
#include <sys/resource.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "soak/endless_sound.h"
#include "soak/frame_count.h"
#include "soak/process_log.h"
#include "support/files.h"
#include "take/plugin_call.h"
#include "take/recorder.h"
#include "terminal/log_output.h"
#include "terminal/wording.h"

namespace corvane_test {
namespace {

constexpr int64_t kAacFrame = 1024;        // sample frames
constexpr int64_t kMostSamples = 24 * 60;  // of the process

struct Options {
  double minutes = 10;
  int rate = 48000;
  int channels = 1;
  std::string folder = ".";

  int64_t frames() const { return static_cast<int64_t>(minutes * 60 * rate); }
  // Sample frames between two looks at the process: whole seconds.
  int64_t interval() const {
    const int64_t seconds = frames() / rate / kMostSamples;
    return std::max<int64_t>(1, seconds) * rate;
  }
  std::string Path(const std::string& name) const {
    return folder + "/" + name;
  }
};

Options Parse(int argc, char** argv) {
  Options options;
  CLI::App app("Records one long take and watches itself", "soak");
  app.add_option("MINUTES", options.minutes, "Length of the audio")
      ->check(CLI::Range(2.0, 1e6));
  app.add_option("--rate", options.rate, "Sample rate in Hz");
  app.add_option("--channels", options.channels);
  app.add_option("--folder", options.folder, "Where everything goes");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    exit(app.exit(error));
  }
  return options;
}

// Where nobody sees the live line, a line for every 24th of the take.
void Tell(const ProcessLog& log, const Options& options,
          corvane::Console* console) {
  const int64_t marks = options.frames() / options.interval();
  const auto so_far = static_cast<int64_t>(log.samples().size());
  if (console->has_live_line() ||
      so_far * 24 / marks == (so_far - 1) * 24 / marks) {
    return;
  }
  const ProcessSample& now = log.samples().back();
  console->Line(
      corvane::clock_tenths(static_cast<int64_t>(now.audio_s * 1000)) +
      " recorded in " +
      corvane::clock_tenths(static_cast<int64_t>(now.run_s * 1000)) + ", " +
      corvane::file_size(now.resident_kib * 1024) + " resident, " +
      std::to_string(now.descriptors) + " descriptors");
}

corvane::TakeResult Record(const Options& options, ProcessLog* log,
                           corvane::Console* console) {
  static corvane::LogOutput lines(console);  // GLib keeps it for good
  lines.TakeOverGlib();
  corvane::Engine engine;
  corvane::show_log_lines(&engine, &lines);
  EndlessSound sound({options.rate, options.channels}, options.frames(),
                     options.interval(), [&](int64_t frames) {
                       log->Sample(static_cast<double>(frames) / options.rate);
                       Tell(*log, options, console);
                     });
  corvane::TakeOptions take;
  take.capture_path = options.Path("take.aac");
  take.feed.chunk_ms = 20;
  corvane::TakeResult result;
  {
    corvane::Progress progress(console, {take.capture_path,
                                         {options.rate, options.channels},
                                         take.bit_rate,
                                         options.frames()});
    result = corvane::Recorder(&engine, &sound, take, {}, &progress).Run();
  }
  engine.Shutdown();
  lines.Flush();
  return result;
}

using Complaints = std::vector<std::string>;

void Expect(const std::string& what, int64_t due, int64_t found,
            Complaints* complaints) {
  if (due == found) return;
  complaints->push_back(what + ": " + std::to_string(due) + " due, " +
                        std::to_string(found) + " found");
}

// The encoder's priming moves everything by one frame.
int64_t FramesDue(int64_t fed) { return (fed + kAacFrame - 1) / kAacFrame + 1; }

void JudgeFile(const Options& options, const corvane::TakeResult& take,
               const FrameCount& count, Complaints* complaints) {
  if (take.error) complaints->push_back(corvane::describe(*take.error));
  if (!take.has_sealed()) {
    complaints->push_back("the take was not sealed");
    return;
  }
  const corvane::SealedCapture& sealed = *take.parts[0].sealed;
  const int64_t frames = FramesDue(options.frames());
  const int64_t duration_ms = frames * kAacFrame * 1000 / options.rate;
  Expect("sample frames fed", options.frames(), take.frames, complaints);
  Expect("frames in the file", frames, count.frames, complaints);
  Expect("bytes of whole frames", FileSize(options.Path("take.aac")),
         count.bytes, complaints);
  Expect("sealed bytes", count.bytes, sealed.bytes, complaints);
  Expect("sealed milliseconds", duration_ms, sealed.duration_ms, complaints);
  Expect("sealed milliseconds of the source", duration_ms,
         sealed.source_duration_ms, complaints);
  Expect("dropped bytes", 0, sealed.dropped_append_bytes, complaints);
}

double CpuSeconds() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) +
           static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

nlohmann::ordered_json Summary(const Options& options, const ProcessLog& log,
                               const FrameCount& count,
                               const Complaints& complaints) {
  const std::vector<ProcessSample>& samples = log.samples();
  const auto [least, most] =
      std::minmax_element(samples.begin(), samples.end(),
                          [](const ProcessSample& a, const ProcessSample& b) {
                            return a.resident_kib < b.resident_kib;
                          });
  return {{"rate", options.rate},
          {"channels", options.channels},
          {"audio_s", options.frames() / options.rate},
          {"run_s", samples.back().run_s},
          {"cpu_s", CpuSeconds()},
          {"frames_due", FramesDue(options.frames())},
          {"frames_found", count.frames},
          {"bytes", count.bytes},
          {"samples", samples.size()},
          {"least_resident_kib", least->resident_kib},
          {"most_resident_kib", most->resident_kib},
          {"descriptors", samples.back().descriptors},
          {"complaints", complaints}};
}

int Soak(const Options& options) {
  std::filesystem::create_directories(options.folder);
  static corvane::Console console(STDERR_FILENO);
  ProcessLog log(options.Path("samples.csv"), kMostSamples * 2);
  const corvane::TakeResult take = Record(options, &log, &console);
  const FrameCount count =
      CountFrames(options.Path("take.aac"), options.channels);
  Complaints complaints;
  log.Judge(&complaints);
  JudgeFile(options, take, count, &complaints);
  const std::string summary = Summary(options, log, count, complaints).dump(2);
  std::ofstream(options.Path("soak.json")) << summary << std::endl;
  std::cout << summary << std::endl;
  // What failed is kept to be looked at; what held is only large.
  if (complaints.empty()) unlink(options.Path("take.aac").c_str());
  return complaints.empty() ? 0 : 1;
}

}  // namespace
}  // namespace corvane_test

int main(int argc, char** argv) {
  return corvane_test::Soak(corvane_test::Parse(argc, argv));
}
