// Takes from real sound servers: what was played on the server is what is in
// the file, and what a stopped program missed is told.
#include "host/sound_server.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

constexpr int kStageRate = 48000;

using Signal = std::vector<double>;

Signal signal_of(const Bytes& pcm) {
  Signal samples(pcm.size() / 2);
  for (size_t i = 0; i < samples.size(); ++i) {
    int16_t sample = 0;
    std::memcpy(&sample, &pcm[2 * i], sizeof(sample));
    samples[i] = sample;
  }
  return samples;
}

double energy_of(const Signal& signal, size_t from, size_t size) {
  double energy = 0;
  for (size_t i = from; i < from + size; ++i) energy += signal[i] * signal[i];
  return energy;
}

// Of two pieces of equal size: 1 where one is the other, at any level.
double correlation(const Signal& one, size_t from, const Signal& other,
                   size_t other_from, size_t size) {
  double product = 0;
  for (size_t i = 0; i < size; ++i) {
    product += one[from + i] * other[other_from + i];
  }
  const double energies =
      energy_of(one, from, size) * energy_of(other, other_from, size);
  return energies > 0 ? product / std::sqrt(energies) : 0;
}

// Where in `recorded` the piece of `played` is that begins at `from`: the lag
// with the greatest correlation among those from `least` to `most`.
int64_t lag_of(const Signal& played, size_t from, size_t size,
               const Signal& recorded, int64_t least, int64_t most) {
  int64_t best = least;
  double highest = -1;
  for (int64_t lag = least; lag <= most; ++lag) {
    const int64_t at = static_cast<int64_t>(from) + lag;
    if (at < 0 || at + static_cast<int64_t>(size) >
                      static_cast<int64_t>(recorded.size())) {
      continue;
    }
    const double found =
        correlation(played, from, recorded, static_cast<size_t>(at), size);
    if (found > highest) {
      highest = found;
      best = lag;
    }
  }
  return best;
}

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

class SoundServerTest : public ProgramTest,
                        public ::testing::WithParamInterface<ServerKind> {
 protected:
  std::unique_ptr<Child> Start(const Words& more = {}) {
    ChildSetup setup;
    setup.environment = server_.environment();
    Words words = {"record", "-D", "default", take_};
    words.insert(words.end(), more.begin(), more.end());
    auto child = StartCorvane(words, setup);
    child->AwaitError("AAC encoder aac started");
    return child;
  }

  Signal Decoded() {
    const std::string raw = Path("decoded.raw");
    const ChildResult run =
        Child({"/bin/sh", "-c",
               "exec ffmpeg -nostdin -v error -i \"$0\" -f s16le \"$1\"", take_,
               raw},
              {})
            .Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    return signal_of(ReadFile(raw));
  }

  // Every half second of what was played is there, at one and the same offset.
  void ShouldHold(const Signal& played, const Signal& recorded) {
    constexpr size_t kPiece = kStageRate / 2;
    const int64_t lag =
        lag_of(played, kPiece, kPiece / 4, recorded, 0, 2 * kStageRate);
    for (size_t from = 0; from + kPiece <= played.size(); from += kPiece) {
      if (energy_of(played, from, kPiece) < kPiece * 10000.0) continue;
      EXPECT_EQ(lag_of(played, from, kPiece, recorded, lag - 40, lag + 40), lag)
          << "at " << from;
      EXPECT_GT(correlation(played, from, recorded,
                            from + static_cast<size_t>(lag), kPiece),
                0.95)
          << "at " << from;
    }
  }

  const std::string take_ = Path("take.aac");
  SoundServer server_{GetParam()};
};

TEST_P(SoundServerTest, WhatWasPlayedIsWhatIsRecorded) {
  const Bytes speech = speech_of(seconds_played());
  WriteFile(Path("speech.raw"), speech);
  const auto child = Start({"-b", "128k"});
  server_.Play(Path("speech.raw"));
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.find("warning"), std::string::npos) << run.err;
  ShouldHold(signal_of(speech), Decoded());
}

// The server keeps four MiB for a program that doesn't read, 3.6 s of this.
TEST_P(SoundServerTest, WhatAStoppedProgramMissedIsTold) {
  const auto child = Start({"-r", "96000", "-c", "6"});
  child->Signal(SIGSTOP);
  constexpr int kStoppedMs = 8000;
  usleep(kStoppedMs * 1000);
  child->Signal(SIGCONT);
  child->AwaitError("the take goes on");
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  const size_t at = run.err.find("warning: ");
  ASSERT_NE(at, std::string::npos) << run.err;
  const double told_ms = std::stod(run.err.substr(at + 9));
  const json figures = json::parse(run.out);
  const double recorded_ms = figures["sampleFrames"].get<double>() / 96;
  EXPECT_GT(told_ms, 500);
  EXPECT_NEAR(recorded_ms + told_ms, figures["wallMs"].get<double>(), 100);
}

TEST_P(SoundServerTest, AServerThatEndsLeavesASealedTake) {
  const auto child = Start();
  server_.Kill();
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 1);
  ASSERT_NE(run.out, "") << run.err;
  EXPECT_EQ(json::parse(run.out)["endedBy"], "error");
  EXPECT_NE(run.err.find("corvane: device default: it stopped"),
            std::string::npos)
      << run.err;
  EXPECT_NE(run.err.find("continue it with: corvane resume '" + take_ +
                         "' -D 'default'"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(DecoderComplaints(take_), "");
}

std::string name_of(const ::testing::TestParamInfo<ServerKind>& kind) {
  return kind.param == ServerKind::kPulseAudio ? "PulseAudio" : "PipeWire";
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, SoundServerTest,
                         ::testing::Values(ServerKind::kPulseAudio,
                                           ServerKind::kPipeWire),
                         name_of);

}  // namespace
}  // namespace corvane_test
