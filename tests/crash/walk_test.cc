// Random sequences of calls against the plugin and against the model of what
// it promises, compared at every step.
#include <filesystem>
#include <iostream>
#include <sstream>

#include "crash/chance.h"
#include "crash/walk_model.h"
#include "support/channel_fixture.h"
#include "support/faults.h"
#include "support/files.h"
#include "support/naive_scan.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

namespace fs = std::filesystem;

constexpr int kStepsPerWalk = 50;

bool IsAround(const Step& step) { return step.what >= Do::kRestart; }

Value ArgsOf(const Step& step) {
  static const Bytes pcm = Noise(20000);
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

// What a step may take away from the end of a file that stood there before:
// whatever no scan can reach.
Bytes MustStay(const Step& step, const Bytes& content) {
  const bool trims = step.what == Do::kStop || step.what == Do::kResumePath ||
                     step.what == Do::kFinalizePath;
  return trims ? Slice(content, 0, NaiveScan(content).stream_end) : content;
}

// Every byte string that stood somewhere stands somewhere still, as a whole or
// with more behind it. The header of a WAV file is the named exception.
std::string Lost(const Step& step, const World& before, const World& after) {
  if (step.what == Do::kFinalizeWavOnly) return "";
  for (const auto& [path, content] : before.files) {
    const Bytes front = MustStay(step, content);
    bool stays = false;
    for (const auto& [now, bytes] : after.files) {
      stays = stays || Slice(bytes, 0, front.size()) == front;
    }
    if (!stays) return "bytes that stood at " + path + " are gone\n";
  }
  return "";
}

std::string Difference(const World& expected, const World& actual) {
  std::ostringstream text;
  for (const auto* world : {&expected, &actual}) {
    text << (world == &expected ? "files due:" : "\nfiles found:");
    for (const auto& [path, content] : world->files) {
      const auto other = (world == &expected ? actual : expected).files;
      const auto twin = other.find(path);
      const bool same = twin != other.end() && twin->second == content;
      text << "\n  " << path << " " << content.size() << " bytes"
           << (same ? "" : " (!)");
    }
  }
  return text.str() + "\n";
}

std::string Difference(const std::vector<std::string>& expected,
                       const std::vector<std::string>& actual) {
  std::string text = "due:\n";
  for (const std::string& line : expected) text += "  " + line + "\n";
  text += "came:\n";
  for (const std::string& line : actual) text += "  " + line + "\n";
  return text;
}

class RandomWalkTest : public ChannelTest {
 protected:
  // What is wrong at the first step at which something is; empty: all's well.
  std::string Run(const Walk& walk) {
    const TempDir folder;
    const WorkingDir inside(folder.path());
    Restart();
    TakeTranscript();
    WalkModel model(folder.path());
    std::string wrong;
    for (size_t i = 0; i < walk.size() && wrong.empty(); ++i) {
      wrong = IsAround(walk[i]) ? GoAround(walk[i], &model)
                                : Compare(walk[i], &model);
      wrong += model.complaint();
      const World found = WorldIn(folder.path());
      if (!(found == model.world())) wrong += Difference(model.world(), found);
      if (!wrong.empty()) wrong = "step " + std::to_string(i) + ": " + wrong;
    }
    Shutdown();
    return wrong;
  }

  void Hold(const Walk& walk) { EXPECT_EQ(Run(walk), ""); }

  // Leaves out what the failure doesn't need.
  Walk Shrink(Walk walk) {
    for (size_t i = walk.size(); i-- > 0;) {
      Walk shorter = walk;
      shorter.erase(shorter.begin() + i);
      if (!Run(shorter).empty()) walk = shorter;
    }
    return walk;
  }

 private:
  std::string Compare(const Step& step, WalkModel* model) {
    const World before = model->world();
    Bytes written;
    {
      const Fault tap(Tap(&written));
      Call(MethodOf(step), ArgsOf(step));
    }
    const auto expected = model->Call(step, written);
    const auto actual = TakeTranscript();
    std::string wrong;
    if (expected != actual) wrong = Difference(expected, actual);
    return wrong + Lost(step, before, WorldIn(fs::current_path().string()));
  }

  std::string GoAround(const Step& step, WalkModel* model) {
    Bytes written;
    if (step.what == Do::kRestart) {
      const Fault tap(Tap(&written));
      Restart();
      TakeTranscript();
    } else {
      ChangeFiles(step, *model);
    }
    model->Around(step, written);
    return "";
  }

  static Rule Tap(Bytes* written) {
    return On("write").MayMiss().After([written](PluginCall& call) {
      const auto* data = static_cast<const uint8_t*>(call.data);
      written->insert(written->end(), data, data + call.result);
    });
  }

  static void ChangeFiles(const Step& step, const WalkModel& model) {
    const std::string& path = kWalkPaths[step.path];
    const bool is_file = fs::is_regular_file(path);
    const bool fits =
        !fs::exists(path) &&
        fs::is_directory(fs::path(model.Normal(path)).parent_path());
    if (step.what == Do::kTear && is_file) {
      const size_t size = FileSize(path);
      TruncateFile(path, size - std::min<size_t>(size, step.count));
    } else if (step.what == Do::kLitter && is_file) {
      AppendToFile(path, Foreign(step.count));
    } else if (step.what == Do::kForeignFile && fits) {
      WriteFile(path, Foreign(step.count));
    } else if (step.what == Do::kFolder && fits) {
      fs::create_directory(path);
      WriteFile(path + "/inside", Foreign(10));
    } else if (step.what == Do::kRemove && is_file && !model.Records(path)) {
      fs::remove(path);
    }
  }
};

TEST_F(RandomWalkTest, PluginAndModelAgreeAtEveryStep) {
  const int steps = CountFromEnvironment("CORVANE_WALK_STEPS", 5000);
  for (int n = 0; n * kStepsPerWalk < steps; ++n) {
    Chance chance(n);
    Walk walk;
    for (int i = 0; i < kStepsPerWalk; ++i) walk.push_back(RandomStep(&chance));
    if (Run(walk).empty()) continue;
    const Walk shortest = Shrink(walk);
    FAIL() << "walk " << n << " in short:\n"
           << ToString(shortest) << "\n"
           << Run(shortest);
  }
}

// A walk as a failing one prints itself.
TEST_F(RandomWalkTest, ATornTakeIsResumedAndTheNextStartMovesItAside) {
  Hold({{Do::kStart, 0, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 20000},
        {Do::kCancel, 0, 48000, 2, 0},
        {Do::kTear, 0, 48000, 2, 5},
        {Do::kResumePath, 2, 48000, 2, 0},
        {Do::kAppend, 0, 48000, 2, 9000},
        {Do::kFinalizePath, 0, 48000, 2, 2},
        {Do::kStart, 0, 48000, 2, 0}});
}

}  // namespace
}  // namespace corvane_test
