// Calls that are made while the worker stands still in an earlier one.
#ifndef CORVANE_TESTS_FAULTS_MOMENT_FIXTURE_H_
#define CORVANE_TESTS_FAULTS_MOMENT_FIXTURE_H_

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "faults_fixture.h"

namespace corvane_test {

// The worker stands still in a call while the test makes further ones.
class MomentTest : public FaultsTest {
 protected:
  // With a capture open: the worker waits in a flush.
  void HoldInAFlush() {
    path_ = Begin();
    gate_ = std::make_unique<Gate>(On("fsync"));
    Post("flush");
    gate_->AwaitWorker();
  }

  // Without one: it waits in the repair of a WAV file.
  void HoldWithoutACapture() {
    const std::string wav = Path("held.wav");
    WriteFile(wav, Bytes(44, 0));
    gate_ = std::make_unique<Gate>(On("fopen"));
    Post("finalizeWavOnly", WavArgs(wav));
    gate_->AwaitWorker();
  }

  // Lets it go on; returns what came of the calls behind the held one.
  Lines GoOn() {
    gate_->Open();
    AwaitReplies();
    Lines lines = TakeTranscript();
    const auto held =
        std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
          return line == Answer("flush", NullReply()) ||
                 line == Answer("finalizeWavOnly", NullReply());
        });
    EXPECT_NE(held, lines.end());
    lines.erase(lines.begin(), held == lines.end() ? held : held + 1);
    return lines;
  }

  // Lets it go on to another call.
  void HoldAgainIn(const Rule& call) {
    auto next = std::make_unique<Gate>(call);
    gate_->Open();
    next->AwaitWorker();
    gate_ = std::move(next);
  }

  static Value WavArgs(const std::string& path) {
    return Value::Map(
        {{"wavPath", path}, {"sampleRate", 48000}, {"channels", 1}});
  }

  std::string path_;

 private:
  std::unique_ptr<Gate> gate_;
};

inline const Reply kNoStop =
    PlainError("NOT_RECORDING", "stop with no open recording");

inline Reply NoAppend(size_t size) {
  return PlainError("NOT_RECORDING", "append of " + std::to_string(size) +
                                         " bytes with no open recording");
}

}  // namespace corvane_test

#endif  // CORVANE_TESTS_FAULTS_MOMENT_FIXTURE_H_
