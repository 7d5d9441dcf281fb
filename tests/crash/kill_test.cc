// SIGKILL at random and at chosen moments of a take. The page cache outlives a
// process, so these test the death of the process alone.
#include <algorithm>
#include <array>
#include <iostream>

#include "crash/kill_fixture.h"
#include "support/chance.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

enum class Moment {
  kWaiting,  // for more audio, where a recorder spends nearly all its time
  kRunning,  // wherever the recorder happens to be
  kBetweenHeaderAndPayload,
  kInsidePayload,
  kAroundWrite,
  kInsideDrain,  // of a pause or a stop
  kAroundSync,
  kCount
};
constexpr std::array<const char*, 3> kRecoveries = {"resumePath",
                                                    "finalizePath", "start"};
constexpr std::array<int, 3> kChannels = {1, 2, 6};
constexpr int kHeader = 7;

// A take of random steps, with the step of its first pause or, without one,
// of its stop.
struct RandomTake {
  Take take;
  int drain = 0;
};

RandomTake MakeTake(Chance* chance, const std::string& path, int channels,
                    bool resumes) {
  RandomTake made;
  made.take = {path, chance->OneIn(2) ? 44100 : 48000, channels, {}};
  Steps& steps = made.take.steps;
  steps = {resumes ? "resumePath" : "start"};
  for (int i = chance->Between(4, 25); i > 0; --i) {
    steps.push_back("append=" + std::to_string(chance->Between(1, 2500)));
    if (chance->OneIn(8)) steps.push_back("flush");
    if (chance->OneIn(12) && i > 1) {
      steps.insert(steps.end(), {"pause", "resume"});
    }
  }
  steps.push_back("stop");
  const auto pause = std::find(steps.begin(), steps.end(), "pause");
  made.drain = static_cast<int>(
      (pause != steps.end() ? pause : steps.end() - 1) - steps.begin());
  return made;
}

StopPoint MakePoint(Chance* chance, Moment moment, const RandomTake& made) {
  const int last = static_cast<int>(made.take.steps.size()) - 1;
  StopPoint point{chance->Between(1, last), "write"};
  switch (moment) {
    case Moment::kWaiting:
      point = {chance->Between(1, last - 1), ""};
      break;
    case Moment::kRunning:
      point = {};
      break;
    case Moment::kBetweenHeaderAndPayload:
      point.accept = kHeader;
      point.after = true;
      break;
    case Moment::kInsidePayload:
      point.accept = chance->Between(1, 60);
      point.after = true;
      break;
    case Moment::kInsideDrain:
      point.step = made.drain;
      point.accept = chance->Between(1, 60);
      point.after = true;
      break;
    case Moment::kAroundSync:
      point.function = "fsync";
      [[fallthrough]];
    default:
      point.after = chance->OneIn(2);
  }
  return point;
}

bool MakesTornFrames(Moment moment) {
  return moment == Moment::kBetweenHeaderAndPayload ||
         moment == Moment::kInsidePayload || moment == Moment::kInsideDrain;
}

bool IsFrontOf(const Bytes& front, const Bytes& whole) {
  return front.size() <= whole.size() &&
         std::equal(front.begin(), front.end(), whole.begin());
}

// How many kills lost what the encoder holds back, and how many else.
struct Tally {
  int measured = 0;
  int exact = 0;
  int less = 0;
  int more = 0;
};

class KilledTakeTest : public KillTest {
 protected:
  void KillOnce(int number) {
    Chance chance(number);
    const auto moment =
        static_cast<Moment>(number % static_cast<int>(Moment::kCount));
    const std::string recovery = kRecoveries[number % kRecoveries.size()];
    const int channels = kChannels[chance.Between(0, kChannels.size() - 1)];
    const std::string path = Path("take" + std::to_string(number) + ".aac");
    const bool resumes = chance.OneIn(4);
    const RandomTake made = MakeTake(&chance, path, channels, resumes);
    const Bytes old = resumes ? Old(made.take) : Bytes();
    if (resumes) WriteFile(path, old);
    const Bytes reference = Uninterrupted(made.take, old);
    const Remains remains =
        Kill(made.take, MakePoint(&chance, moment, made),
             chance.Between(1, static_cast<int>(made.take.steps.size())));

    const Bytes left = ReadFile(path);
    EXPECT_TRUE(IsFrontOf(left, reference));
    EXPECT_TRUE(IsFrontOf(Concat(old, remains.journal), left))
        << "a byte whose write had returned is gone";
    const Bytes whole = WholePart(left, reference);
    EXPECT_TRUE(left == whole || moment == Moment::kRunning ||
                MakesTornFrames(moment))
        << "a frame is written in pieces";
    Count(moment, remains, LossOf(remains, left, old.size()));
    Recover(recovery, made.take, left, whole);
    ExpectDecodes(ReadFile(path));
  }

  Bytes Old(Take take) {
    take.steps = {"start", "append=5000", "stop"};
    return Uninterrupted(take);
  }

  void Count(Moment moment, const Remains& remains,
             const std::optional<Loss>& loss) {
    if (!loss) return;
    Tally& tally = moment == Moment::kWaiting ? waiting_ : working_;
    const int64_t beyond = loss->lost - loss->formula;
    ++tally.measured;
    ++(beyond == 0 ? tally.exact : beyond < 0 ? tally.less : tally.more);
    EXPECT_LE(beyond, remains.writing ? 1024 : 0);
    EXPECT_TRUE(beyond == 0 || moment != Moment::kWaiting) << beyond;
  }

  Tally waiting_;
  Tally working_;
};

void Print(const char* where, const Tally& tally) {
  std::cout << where << ": of " << tally.measured << " kills measured "
            << tally.exact << " lost 2048 + (fed mod 1024) sample frames, "
            << tally.less << " less, " << tally.more << " more" << std::endl;
}

TEST_F(KilledTakeTest, NoAnsweredFrameIsLostAndRecoveryGivesTheExpectedBytes) {
  const int kills = CountFromEnvironment("CORVANE_KILLS", 100);
  for (int i = 0; i < kills && !HasFailure(); ++i) {
    SCOPED_TRACE("kill " + std::to_string(i));
    KillOnce(i);
  }
  Print("while waiting for audio", waiting_);
  Print("while at work", working_);
}

}  // namespace
}  // namespace corvane_test
