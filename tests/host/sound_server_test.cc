// Takes from real sound servers: what was played on the server is what is in
// the file, and what a stopped program missed is told.
#include "host/sound_server.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <map>
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
  while (speech.size() < seconds * kStageRate * 2) {
    for (const char* name :
         {"Front_Center.wav", "Rear_Left.wav", "Side_Right.wav",
          "Front_Left.wav", "Rear_Center.wav", "Side_Left.wav"}) {
      speech = Concat(speech, WavData(folder + name));
    }
  }
  speech.resize(seconds * kStageRate * 2);
  return speech;
}

// What is recorded from one of the servers.
struct Take {
  SoundServer* server;
  std::string path;
  std::unique_ptr<Child> recorder;
};
using Takes = std::vector<Take>;
using Players = std::vector<std::unique_ptr<Child>>;

// Both servers at once, since most of it is waiting; and one start of them.
class SoundServerTest : public ProgramTest {
 protected:
  static void SetUpTestSuite() {
    servers_["pulse"] = std::make_unique<SoundServer>(ServerKind::kPulseAudio);
    servers_["pipewire"] = std::make_unique<SoundServer>(ServerKind::kPipeWire);
    StartServers();
  }
  static void TearDownTestSuite() { servers_.clear(); }

  static void StartServers() {
    for (const auto& [name, server] : servers_) server->Start();
    for (const auto& [name, server] : servers_) server->AwaitReady();
  }

  // A take from each.
  Takes Start(const std::string& name, const Words& more = {}) {
    Takes takes;
    for (const auto& [kind, server] : servers_) {
      ChildSetup setup;
      setup.environment = server->environment();
      const std::string path = Path(kind + "-" + name + ".aac");
      Words words = {"record", "-D", "default", path};
      words.insert(words.end(), more.begin(), more.end());
      takes.push_back({server.get(), path, StartCorvane(words, setup)});
    }
    return takes;
  }

  Takes StartAndAwait(const std::string& name, const Words& more = {}) {
    Takes takes = Start(name, more);
    for (const Take& take : takes) {
      take.recorder->AwaitError("AAC encoder aac started");
    }
    return takes;
  }

  static void Signal(const Takes& takes, int signal) {
    for (const Take& take : takes) take.recorder->Signal(signal);
  }

  // On each of them, and a second of silence: a take that is ended behind it
  // has heard the sound.
  Players Play(const Bytes& sound, int ahead_s) {
    const std::string path = Path(std::to_string(sound.size()) + ".raw");
    WriteFile(path, Concat(sound, Bytes(kStageRate * 2)));
    Players players;
    for (const auto& [name, server] : servers_) {
      players.push_back(server->Play(path, ahead_s));
    }
    return players;
  }

  static void AwaitEnd(const Players& players) {
    for (const auto& player : players) EXPECT_EQ(player->Wait().status, 0);
  }

  static Waveform Decoded(const std::string& take) {
    const std::string raw = take + ".raw";
    const ChildResult run =
        Child({"/usr/bin/ffmpeg", "-nostdin", "-v", "error", "-i", take, "-ac",
               "1", "-ar", "48000", "-f", "s16le", raw},
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

  static void ShouldEndWhole(const Take& take, const Waveform& played) {
    SCOPED_TRACE(take.path);
    const ChildResult run = take.recorder->Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err.find("warning"), std::string::npos) << run.err;
    ShouldHold(played, Decoded(take.path));
  }

  static inline std::map<std::string, std::unique_ptr<SoundServer>> servers_;
};

TEST_F(SoundServerTest, WhatWasPlayedIsWhatIsRecordedInEachOfTwoTakes) {
  const Bytes speech = speech_of(seconds_played());
  const Takes one = StartAndAwait("one", {"-b", "128k"});
  const Takes other = StartAndAwait("other", {"-b", "128k"});
  AwaitEnd(Play(speech, 30));
  Signal(one, SIGINT);
  Signal(other, SIGINT);
  for (const Take& take : one) ShouldEndWhole(take, samples_of(speech));
  for (const Take& take : other) ShouldEndWhole(take, samples_of(speech));
}

// What the program told to be missing, in ms.
double told_ms(const std::string& err) {
  const size_t at = err.find("warning: ");
  EXPECT_NE(at, std::string::npos) << err;
  return at == std::string::npos ? 0 : std::stod(err.substr(at + 9));
}

// What was played tells how much is missing: the speech behind the gap is that
// much nearer to the speech before it.
double missing_ms(const Waveform& played, size_t before, size_t behind,
                  const Waveform& recorded, double about_ms) {
  constexpr size_t kPiece = kStageRate / 8;
  const int64_t near = onset_of(recorded) - onset_of(played);
  const int64_t lag =
      lag_of(played, before, kPiece, recorded, near - 3000, near + 3000);
  const auto about = static_cast<int64_t>(about_ms * kStageRate / 1000);
  const int64_t later = lag_of(played, behind, kPiece, recorded,
                               lag - about - 5000, lag - about + 5000);
  EXPECT_GT(
      correlation(played, behind, recorded,
                  static_cast<size_t>(static_cast<int64_t>(behind) + later),
                  kPiece),
      0.9);
  return static_cast<double>(lag - later) * 1000 / kStageRate;
}

// A server keeps some MiB for a program that doesn't read, up to 5 s of this.
TEST_F(SoundServerTest, WhatAStoppedProgramMissedIsTold) {
  constexpr size_t kSeconds = 10;
  constexpr int kHeardUs = 1800000;
  constexpr int kStoppedUs = 6000000;
  constexpr size_t kPiece = kStageRate / 8;
  const Bytes speech = speech_of(kSeconds);
  const Takes takes = StartAndAwait("stopped", {"-r", "96000", "-c", "6"});
  const Players players = Play(speech, 2);
  usleep(kHeardUs);
  Signal(takes, SIGSTOP);
  usleep(kStoppedUs);
  Signal(takes, SIGCONT);
  AwaitEnd(players);
  const Waveform played = samples_of(speech);
  const size_t before = loudest_of(played, 0, kStageRate, kPiece);
  const size_t behind = loudest_of(played, kSeconds * kStageRate * 85 / 100,
                                   kSeconds * kStageRate, kPiece);
  for (const Take& take : takes) {
    SCOPED_TRACE(take.path);
    take.recorder->AwaitError("the take goes on");
    take.recorder->Signal(SIGINT);
    const ChildResult run = take.recorder->Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    const double told = told_ms(run.err);
    EXPECT_GT(told, 100);
    EXPECT_NEAR(
        told, missing_ms(played, before, behind, Decoded(take.path), told), 50);
  }
}

// An eighth of a second of this format is more than a server sends at once. It
// waits for who holds such a piece, and its library would wait for the server.
TEST_F(SoundServerTest, AServerThatIsToldToEndWhileItPlaysLeavesASealedTake) {
  const Takes takes = StartAndAwait("told", {"-r", "96000", "-c", "6"});
  const Players players = Play(speech_of(10), 2);
  AwaitEnd(Play(speech_of(1), 1));
  for (const Take& take : takes) {
    SCOPED_TRACE(take.path);
    take.server->Stop();
    const ChildResult run = take.recorder->Wait();
    EXPECT_EQ(run.status, 1) << run.err;
    ASSERT_NE(run.out, "") << run.err;
    EXPECT_EQ(json::parse(run.out)["endedBy"], "error");
    EXPECT_EQ(DecoderComplaints(take.path), "");
  }
  for (const auto& player : players) player->Wait();
  StartServers();
}

TEST_F(SoundServerTest, AServerThatEndsLeavesASealedTakeAndNoneUntilItIsBack) {
  for (const Take& take : StartAndAwait("ended")) {
    SCOPED_TRACE(take.path);
    take.server->Kill();
    const ChildResult run = take.recorder->Wait();
    EXPECT_EQ(run.status, 1);
    ASSERT_NE(run.out, "") << run.err;
    EXPECT_EQ(json::parse(run.out)["endedBy"], "error");
    EXPECT_NE(run.err.find("corvane: device default: it stopped"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("continue it with: corvane resume '" + take.path +
                           "' -D 'default'"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(DecoderComplaints(take.path), "");
  }
  for (const Take& take : Start("early")) {
    const ChildResult run = take.recorder->Wait();
    ShouldFail(run,
               "device default: the sound server doesn't answer; start it, or "
               "take a device that needs none: corvane devices");
    EXPECT_EQ(run.out, "");
    EXPECT_FALSE(Exists(take.path)) << take.path;
  }
  StartServers();
  const Takes late = StartAndAwait("early");
  Signal(late, SIGINT);
  for (const Take& take : late) EXPECT_EQ(take.recorder->Wait().status, 0);
}

}  // namespace
}  // namespace corvane_test
