#include "faults/sweep_scenario.h"

#include "adts/frame.h"
#include "channel/wav_fixture.h"
#include "support/channel_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

constexpr int kFrame = 1024 * 2;  // bytes of PCM

// Audio of an earlier take. Nobody decodes it: any payload does.
Bytes Frames(size_t count) {
  Bytes all;
  for (size_t i = 0; i < count; ++i) {
    Bytes frame;
    adts::Frame({2, adts::FrequencyIndexOf(kSweepRate), 1},
                Bytes(50 + i, 0x21).data(), 50 + i, &frame);
    all = Concat(all, frame);
  }
  return all;
}

Bytes Torn() { return Concat(Frames(2), Slice(Frames(1), 0, 20)); }

SweepScenario WholeTake() {
  return {"WholeTake",
          {},
          {{SweepDo::kStart, "take.aac"},
           {SweepDo::kAppend, "", 2 * kFrame + 3},
           {SweepDo::kAppend, "", 2 * kFrame},
           {SweepDo::kFlush, ""},
           {SweepDo::kStop, ""}}};
}

SweepScenario PauseAndResume() {
  return {"PauseAndResume",
          {},
          {{SweepDo::kStart, "take.aac"},
           {SweepDo::kAppend, "", 2 * kFrame + 101},
           {SweepDo::kPause, ""},
           {SweepDo::kAppend, "", 100},
           {SweepDo::kFlush, ""},
           {SweepDo::kResume, ""},
           {SweepDo::kAppend, "", 2 * kFrame},
           {SweepDo::kStop, ""}}};
}

SweepScenario StartOverAudio() {
  return {"StartOverAudio",
          {{"take.aac", Frames(3)}, {"take.orphan.aac", Frames(1)}},
          {{SweepDo::kStart, "take.aac"},
           {SweepDo::kAppend, "", kFrame + 200},
           {SweepDo::kStart, "take.aac"},
           {SweepDo::kAppend, "", kFrame},
           {SweepDo::kCancel, ""}}};
}

SweepScenario ResumeOfATornFile() {
  return {"ResumeOfATornFile",
          {{"take.aac", Torn()}},
          {{SweepDo::kStart, "other.aac"},
           {SweepDo::kAppend, "", kFrame},
           {SweepDo::kResumePath, "take.aac"},
           {SweepDo::kAppend, "", 2 * kFrame + 2},
           {SweepDo::kStop, ""}}};
}

SweepScenario Finalize() {
  return {"Finalize",
          {{"torn.aac", Torn()}},
          {{SweepDo::kStart, "live.aac"},
           {SweepDo::kAppend, "", 2 * kFrame},
           {SweepDo::kAwait, ""},
           {SweepDo::kFinalizePath, "torn.aac"},
           {SweepDo::kAwait, ""},
           {SweepDo::kFinalizePath, "live.aac"},
           {SweepDo::kAppend, "", 10},
           {SweepDo::kAppend, "", 20}}};
}

SweepScenario StopWithForeignBytes() {
  return {"StopWithForeignBytes",
          {},
          {{SweepDo::kStart, "take.aac"},
           {SweepDo::kAppend, "", 3 * kFrame},
           {SweepDo::kAwait, ""},
           {SweepDo::kLitter, "take.aac", 10},
           {SweepDo::kAppend, "", kFrame},
           {SweepDo::kStop, ""}}};
}

SweepScenario WavRepair() {
  return {"WavRepair",
          {{"take.wav", Unfinished(100)}, {"short.wav", Bytes(7, 1)}},
          {{SweepDo::kFinalizeWavOnly, "take.wav"},
           {SweepDo::kFinalizeWavOnly, "short.wav"}}};
}

SweepScenario DisposeInMidTake() {
  SweepScenario scenario = {"DisposeInMidTake",
                            {},
                            {{SweepDo::kStart, "take.aac"},
                             {SweepDo::kAppend, "", 2 * kFrame},
                             {SweepDo::kAppend, "", kFrame + 11}}};
  scenario.disposed_at_work = true;
  return scenario;
}

}  // namespace

std::vector<SweepScenario> SweepScenarios() {
  return {WholeTake(),         PauseAndResume(),  StartOverAudio(),
          ResumeOfATornFile(), Finalize(),        StopWithForeignBytes(),
          WavRepair(),         DisposeInMidTake()};
}

const char* MethodOf(const SweepStep& step) {
  switch (step.what) {
    case SweepDo::kStart:
      return "start";
    case SweepDo::kAppend:
      return "append";
    case SweepDo::kPause:
      return "pause";
    case SweepDo::kResume:
      return "resume";
    case SweepDo::kStop:
      return "stop";
    case SweepDo::kCancel:
      return "cancel";
    case SweepDo::kFlush:
      return "flush";
    case SweepDo::kResumePath:
      return "resumePath";
    case SweepDo::kFinalizePath:
      return "finalizePath";
    case SweepDo::kFinalizeWavOnly:
      return "finalizeWavOnly";
    default:
      return "";
  }
}

Value ArgsOf(const SweepStep& step) {
  // Its frames cost the encoder least, and each counts like any other.
  static const Bytes pcm = Silence(4 * 1024);
  switch (step.what) {
    case SweepDo::kStart:
    case SweepDo::kResumePath:
      return CaptureArgs(step.path, kSweepRate, 1);
    case SweepDo::kFinalizePath:
      return CaptureArgs(step.path, kSweepRate, 1)
          .With("outputPath", step.path);
    case SweepDo::kFinalizeWavOnly:
      return WavArgs(step.path, kSweepRate, 2);
    case SweepDo::kAppend:
      return Slice(pcm, 0, static_cast<size_t>(step.count));
    default:
      return Value();
  }
}

Bytes LitterOf(const SweepStep& step) {
  return Bytes(static_cast<size_t>(step.count), 0);
}

}  // namespace corvane_test
