#include "faults/sweep_fixture.h"

#include <corvane/corvane_plugin.h>

#include <sstream>
#include <utility>

#include "faults/sweep_narrator.h"

namespace corvane_test {
namespace {

using Contents = std::map<std::string, Bytes>;

bool IsWav(const std::string& path) {
  return path.substr(path.rfind('.')) == ".wav";
}

std::string CallsOf(const SweptCalls& calls) {
  std::ostringstream text;
  for (const SweptCall& call : calls) text << "  " << call << "\n";
  return text.str();
}

Lines AllOf(const std::vector<Narrator::Line>& lines) {
  Lines all;
  for (const Narrator::Line& line : lines) all.push_back(line.text);
  return all;
}

// What the worker logged before dispose finds no channel any more; what
// dispose itself logs goes out at once, before the answers do.
Lines AnswersBehindDispose(const std::vector<Narrator::Line>& lines,
                           size_t answered) {
  Lines due;
  for (size_t i = answered; i < lines.size(); ++i) {
    due.push_back(lines[i].text);
  }
  for (size_t i = 0; i < answered; ++i) {
    if (!lines[i].is_log) due.push_back(lines[i].text);
  }
  return due;
}

std::vector<GlibLine> LoggedOf(const std::vector<Narrator::Line>& lines) {
  std::vector<GlibLine> logged;
  for (const Narrator::Line& line : lines) {
    if (!line.is_log) continue;
    const size_t colon = line.text.find(": ");
    const std::string message = line.text.substr(colon + 2);
    logged.push_back(line.text.substr(0, colon) == "info"
                         ? PluginMessage(message)
                         : PluginWarning(message));
  }
  return logged;
}

Contents BytesOf(const SweptFiles& files) {
  Contents bytes;
  for (const auto& [name, file] : files.all()) bytes[name] = file.bytes;
  return bytes;
}

// By turns, for both must get back what there is.
SweepSteps RecoveryOf(const SweptFiles& files, bool resume) {
  SweepSteps steps;
  for (const auto& [name, file] : files.all()) {
    if (IsWav(name)) {
      steps.push_back({SweepDo::kFinalizeWavOnly, name});
    } else if (resume) {
      steps.push_back({SweepDo::kResumePath, name});
      steps.push_back({SweepDo::kStop, ""});
    } else {
      steps.push_back({SweepDo::kAwait, ""});
      steps.push_back({SweepDo::kFinalizePath, name});
    }
  }
  return steps;
}

}  // namespace

SweepFixture::SweepFixture(SweepScenario scenario, SweepTally* tally)
    : plugins_(corvane_plugin_get_type()),
      scenario_(std::move(scenario)),
      tally_(tally) {}

SweepFixture::Ran SweepFixture::Try(const Strike& strike) {
  const std::string name = "CORVANE_SWEEP=\"" + ToString(strike) +
                           "\" sweep_test --gtest_filter='*" + scenario_.name +
                           "'";
  SCOPED_TRACE(name);
  watchdog_.Begin(name);
  Prepare();
  const Lines descriptors = OpenDescriptors();
  SweptFiles files(scenario_.files);
  Ran ran = Run(scenario_.steps, strike, scenario_.disposed_at_work);
  tally_->Count(ran.struck);
  Judge(scenario_.steps, ran, scenario_.disposed_at_work, &files);
  if (HasFailure()) return ran;
  SCOPED_TRACE("its recovery");
  const SweepSteps recovery = RecoveryOf(files, strike.nth % 2 == 0);
  Judge(recovery, Run(recovery, Strike(), false), false, &files);
  ExpectEveryFrameIsReached(files);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  return ran;
}

void SweepFixture::Prepare() {
  for (const std::string& old : ListDir(Path(""))) {
    EXPECT_EQ(unlink(Path(old).c_str()), 0);
  }
  for (const auto& [name, bytes] : scenario_.files) WriteFile(name, bytes);
}

SweepFixture::Ran SweepFixture::Run(const SweepSteps& steps,
                                    const Strike& strike, bool at_work) {
  Restart();
  Injection injection(strike);
  for (const SweepStep& step : steps) Perform(step);
  if (!at_work) AwaitReplies();
  g_object_run_dispose(plugins_.last());
  AwaitReplies();
  DispatchPending();
  EXPECT_EQ(HeldNow(), Held()) << "is leaked";
  return {injection.calls(), injection.struck(), TakeTranscript(),
          glib().Take()};
}

void SweepFixture::Perform(const SweepStep& step) {
  if (step.what == SweepDo::kAwait) {
    AwaitReplies();
  } else if (step.what == SweepDo::kLitter) {
    if (Exists(step.path)) AppendToFile(step.path, LitterOf(step));
  } else {
    Post(MethodOf(step), ArgsOf(step));
  }
}

void SweepFixture::Judge(const SweepSteps& steps, const Ran& ran, bool at_work,
                         SweptFiles* files) {
  Narrator narrator(ran.calls, files, tally_->silences());
  size_t answered = 0;
  try {
    for (const SweepStep& step : steps) narrator.Step(step);
    answered = narrator.lines().size();
    narrator.Dispose();
    narrator.End();
  } catch (const WentAstray& astray) {
    ADD_FAILURE() << astray.what();
  }
  EXPECT_EQ(ran.transcript,
            at_work ? AnswersBehindDispose(narrator.lines(), answered)
                    : AllOf(narrator.lines()));
  EXPECT_EQ(ran.glib, LoggedOf(narrator.lines()));
  EXPECT_EQ(FilesNow(), BytesOf(*files));
  if (HasFailure()) ADD_FAILURE() << "the calls:\n" << CallsOf(ran.calls);
}

std::map<std::string, Bytes> SweepFixture::FilesNow() const {
  Contents now;
  for (const std::string& name : ListDir(Path(""))) {
    now[name] = ReadFile(name);
  }
  return now;
}

void SweepFixture::ExpectEveryFrameIsReached(const SweptFiles& files) {
  for (const auto& [name, file] : files.all()) {
    for (const SweptFrame& frame : file.frames) {
      if (file.Reaches(frame)) continue;
      EXPECT_TRUE(frame.behind_half)
          << "no scan of " << name << " reaches the whole frame that ends at "
          << frame.end;
      ++(*tally_->silences())[SilentFailure::kBehindAHalfWrittenFrame];
    }
  }
}

}  // namespace corvane_test
