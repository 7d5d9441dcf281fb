// Takes from real sound servers: what was played on the server is what is in
// the file, and what a stopped program missed is told.
#include "host/sound_server.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "host/correlation.h"
#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

constexpr int kStageRate = 48000;

// How much is played: ten seconds, or as many as the environment says.
size_t seconds_played() {
  const char* const asked = std::getenv("CORVANE_SOUND_SECONDS");
  return asked == nullptr ? 10 : std::stoul(asked);
}

// Different words one after the other, as often as it takes.
Bytes speech_of(size_t seconds) {
  const std::string folder = "/usr/share/sounds/alsa/";
  Bytes speech;
  for (size_t round = 0; speech.size() < seconds * kStageRate * 2; ++round) {
    for (const char* name :
         {"Front_Center.wav", "Rear_Left.wav", "Side_Right.wav",
          "Front_Left.wav", "Rear_Center.wav", "Side_Left.wav"}) {
      speech = Concat(speech, WavData(folder + name));
    }
  }
  speech.resize(seconds * kStageRate * 2);
  return speech;
}

// One of the servers, what is recorded from it, and what that said.
struct Stage {
  Stage(ServerKind kind, std::string path)
      : server(kind), take(std::move(path)) {}

  SoundServer server;
  const std::string take;
  std::unique_ptr<Child> recorder;
};

// Both servers at once, since most of it is waiting.
class SoundServerTest : public ProgramTest {
 protected:
  void Start(const Words& more = {}) {
    for (Stage* const stage : stages_) {
      ChildSetup setup;
      setup.environment = stage->server.environment();
      Words words = {"record", "-D", "default", stage->take};
      words.insert(words.end(), more.begin(), more.end());
      stage->recorder = StartCorvane(words, setup);
    }
    for (Stage* const stage : stages_) {
      stage->recorder->AwaitError("AAC encoder aac started");
    }
  }

  void Signal(int signal) {
    for (Stage* const stage : stages_) stage->recorder->Signal(signal);
  }

  static Waveform Decoded(const std::string& take) {
    const std::string raw = take + ".raw";
    const ChildResult run =
        Child(
            {"/bin/sh", "-c",
             "exec ffmpeg -nostdin -v error -i \"$0\" -ac 1 -ar 48000 -f s16le "
             "\"$1\"",
             take, raw},
            {})
            .Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    return samples_of(ReadFile(raw));
  }

  // Every half second of what was played is there, at one and the same offset.
  static void ShouldHold(const Waveform& played, const Waveform& recorded) {
    constexpr size_t kPiece = kStageRate / 2;
    const int64_t near = onset_of(recorded) - onset_of(played);
    const int64_t lag =
        lag_of(played, kPiece, kPiece / 4, recorded, near - 3000, near + 3000);
    for (size_t from = 0; from + kPiece <= played.size(); from += kPiece) {
      if (energy_of(played, from, kPiece) < kPiece * 10000.0) continue;
      EXPECT_EQ(lag_of(played, from, kPiece, recorded, lag - 20, lag + 20), lag)
          << "at " << from;
      EXPECT_GT(correlation(played, from, recorded,
                            from + static_cast<size_t>(lag), kPiece),
                0.95)
          << "at " << from;
    }
  }

  Stage pulse_audio_{ServerKind::kPulseAudio, Path("pulse.aac")};
  Stage pipe_wire_{ServerKind::kPipeWire, Path("pipewire.aac")};
  Stage* const stages_[2] = {&pulse_audio_, &pipe_wire_};
};

TEST_F(SoundServerTest, WhatWasPlayedIsWhatIsRecorded) {
  const Bytes speech = speech_of(seconds_played());
  WriteFile(Path("speech.raw"), speech);
  Start({"-b", "128k"});
  const auto one = pulse_audio_.server.Play(Path("speech.raw"));
  const auto other = pipe_wire_.server.Play(Path("speech.raw"));
  EXPECT_EQ(one->Wait().status, 0);
  EXPECT_EQ(other->Wait().status, 0);
  Signal(SIGINT);
  for (Stage* const stage : stages_) {
    SCOPED_TRACE(stage->take);
    const ChildResult run = stage->recorder->Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err.find("warning"), std::string::npos) << run.err;
    ShouldHold(samples_of(speech), Decoded(stage->take));
  }
}

// A server keeps four MiB for a program that doesn't read, 3.6 s of this. What
// was played tells how much is missing: the speech behind the gap is that much
// nearer to the speech before it.
TEST_F(SoundServerTest, WhatAStoppedProgramMissedIsTold) {
  constexpr int kHeardUs = 1000000;
  constexpr int kStoppedUs = 6000000;
  constexpr size_t kPiece = kStageRate / 8;
  const Bytes speech = speech_of(10);
  WriteFile(Path("speech.raw"), speech);
  Start({"-r", "96000", "-c", "6"});
  const auto one = pulse_audio_.server.Play(Path("speech.raw"));
  const auto other = pipe_wire_.server.Play(Path("speech.raw"));
  usleep(kHeardUs);
  Signal(SIGSTOP);
  usleep(kStoppedUs);
  Signal(SIGCONT);
  one->Wait();
  other->Wait();
  const Waveform played = samples_of(speech);
  const size_t before = loudest_of(played, 0, kStageRate, kPiece);
  const size_t behind =
      loudest_of(played, 8 * kStageRate, 10 * kStageRate, kPiece);
  for (Stage* const stage : stages_) {
    SCOPED_TRACE(stage->take);
    stage->recorder->AwaitError("the take goes on");
    stage->recorder->Signal(SIGINT);
    const ChildResult run = stage->recorder->Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    const size_t at = run.err.find("warning: ");
    ASSERT_NE(at, std::string::npos) << run.err;
    const double told_ms = std::stod(run.err.substr(at + 9));
    EXPECT_GT(told_ms, 100);
    const Waveform recorded = Decoded(stage->take);
    const int64_t near = onset_of(recorded) - onset_of(played);
    const int64_t lag =
        lag_of(played, before, kPiece, recorded, near - 3000, near + 3000);
    const auto told = static_cast<int64_t>(told_ms * kStageRate / 1000);
    const int64_t later = lag_of(played, behind, kPiece, recorded,
                                 lag - told - 5000, lag - told + 5000);
    EXPECT_GT(
        correlation(played, behind, recorded,
                    static_cast<size_t>(static_cast<int64_t>(behind) + later),
                    kPiece),
        0.9);
    EXPECT_NEAR(told_ms, static_cast<double>(lag - later) * 1000 / kStageRate,
                50);
    RecordProperty("told", std::to_string(told_ms));
    RecordProperty("missing", std::to_string((lag - later) / 48));
  }
}

TEST_F(SoundServerTest, AServerThatEndsLeavesASealedTake) {
  Start();
  for (Stage* const stage : stages_) {
    SCOPED_TRACE(stage->take);
    stage->server.Kill();
    const ChildResult run = stage->recorder->Wait();
    EXPECT_EQ(run.status, 1);
    ASSERT_NE(run.out, "") << run.err;
    EXPECT_EQ(json::parse(run.out)["endedBy"], "error");
    EXPECT_NE(run.err.find("corvane: device default: it stopped"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("continue it with: corvane resume '" + stage->take +
                           "' -D 'default'"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(DecoderComplaints(stage->take), "");
  }
}

}  // namespace
}  // namespace corvane_test
