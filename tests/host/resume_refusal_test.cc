// `corvane resume` where it cannot go on: one sentence with the way out, and
// not a byte of what is there is touched.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "support/adts_frames.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class ResumeRefusalTest : public ProgramTest {
 protected:
  ChildResult Resume(const std::string& path) {
    return Corvane({"resume", path, "-i", wav_});
  }

  void RecordTake(size_t frames) {
    const ChildResult run =
        Corvane({"record", take_, "-i", MakeWav("first.wav", Sine(frames))});
    ASSERT_EQ(run.status, 0) << run.err;
  }

  const std::string take_ = Path("take.aac");
  const std::string wav_ = MakeWav("in.wav", Sine(4096));
};

TEST_F(ResumeRefusalTest, AMissingCaptureIsNotCreated) {
  ShouldFail(Resume(take_),
             take_ +
                 ": No such file or directory; check the name, or begin a "
                 "take there with: corvane record");
  EXPECT_FALSE(Exists(take_));
}

TEST_F(ResumeRefusalTest, AFolderIsNamed) {
  ShouldFail(Resume(Path(".")),
             Path(".") + ": this is a folder; name a file in it");
}

TEST_F(ResumeRefusalTest, AnotherKindOfFileIsLeftAlone) {
  const Bytes held = ReadFile(wav_);
  ShouldFail(Resume(wav_),
             wav_ +
                 ": it starts like WAV, not like an ADTS capture; it was left "
                 "alone");
  EXPECT_EQ(ReadFile(wav_), held);
}

// Of a tagged MP3 that has a pair of headers by chance.
TEST_F(ResumeRefusalTest, AnotherKindOfFileIsGoneOnWithByForceAlone) {
  RecordTake(96000);
  const std::string mp3 = Path("b.mp3");
  const Bytes held = Concat(Concat({'I', 'D', '3', 4}, Bytes(9000, 'x')),
                            Concat(ReadFile(take_), Bytes(9000, 'x')));
  const std::string objection =
      "it starts like MP3 or AAC with an ID3 tag, not like an ADTS capture";
  WriteFile(mp3, held);
  const ChildResult refused = Resume(mp3);
  ShouldFail(refused, mp3 + ": " + objection + "; it was left alone");
  ShouldFail(refused, mp3 + ": --force takes it for a capture all the same");
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(ReadFile(mp3), held);

  const ChildResult forced = Corvane({"resume", "--force", mp3, "-i", wav_});
  EXPECT_EQ(forced.status, 0) << forced.err;
  EXPECT_NE(forced.err.find("corvane: " + mp3 + ": " + objection +
                            "; done all the same (--force)\n"),
            std::string::npos)
      << forced.err;
  EXPECT_EQ(Slice(ReadFile(mp3), 0, held.size()), held);
  EXPECT_GT(FileSize(mp3), static_cast<int64_t>(held.size()));
}

TEST_F(ResumeRefusalTest, FramesThatMayBeChanceAreNotEnough) {
  RecordTake(4096);
  const Bytes first = SplitFrames(ReadFile(take_))[0];
  const Bytes held = Concat(Bytes(5000, 'x'), first);
  WriteFile(take_, held);
  ShouldFail(Resume(take_),
             take_ + ": not a capture: only " + std::to_string(first.size()) +
                 " of its " + std::to_string(held.size()) +
                 " bytes belong to AAC frames that follow one another; it was "
                 "left alone");
  EXPECT_EQ(ReadFile(take_), held);
}

TEST_F(ResumeRefusalTest, AFileWithoutAFrameIsLeftAlone) {
  const std::vector<std::pair<Bytes, std::string>> contents = {
      {Bytes(1000, 'x'), ""},
      {Bytes(1000, 0), ", which are all zeros, as after a power cut"}};
  for (const auto& [held, what] : contents) {
    WriteFile(take_, held);
    for (const Words& force : {Words{}, Words{"--force"}}) {
      Words arguments = {"resume", take_, "-i", wav_};
      arguments.insert(arguments.end(), force.begin(), force.end());
      ShouldFail(Corvane(arguments),
                 take_ +
                     ": not a capture: there is no whole AAC frame in its 1000 "
                     "bytes" +
                     what + "; it was left alone");
      EXPECT_EQ(ReadFile(take_), held);
    }
  }
}

TEST_F(ResumeRefusalTest, AReadOnlyCaptureComesWithTheWayOut) {
  RecordTake(96000);
  const Bytes held = ReadFile(take_);
  ASSERT_EQ(chmod(take_.c_str(), S_IRUSR), 0);
  const ChildResult run = CorvaneUnprivileged({"resume", take_, "-i", wav_});
  ShouldFail(run, take_ +
                      ": capture not available for resume: Permission denied; "
                      "make it writable first: chmod u+w '" +
                      take_ + "'");
  ShouldFail(run, take_ +
                      ": the capture is whole up to 0:02.0; continue it with: "
                      "corvane resume '" +
                      take_ + "' -i REST");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadFile(take_), held);
}

TEST_F(ResumeRefusalTest, AMissingInputLeavesTheTornTailAsItIs) {
  RecordTake(48000);
  TruncateFile(take_, static_cast<size_t>(FileSize(take_)) - 3);
  const Bytes held = ReadFile(take_);
  ShouldFail(Corvane({"resume", take_, "-i", Path("gone.wav")}),
             Path("gone.wav") + ": No such file or directory");
  EXPECT_EQ(ReadFile(take_), held);
}

// The limit on a file's size works as a full disk does.
TEST_F(ResumeRefusalTest, ADiskThatFillsUpLeavesTheWayToGoOn) {
  RecordTake(48000);
  const Bytes held = ReadFile(take_);
  const std::string noise = MakeWav("noise.wav", Noise(960000));
  const ChildResult run =
      CorvaneInShell("ulimit -f 64", "", {"resume", take_, "-i", noise});
  ShouldFail(run, take_ + ": Failed to append AAC frame: File too large");
  ShouldFail(run,
             "raise the file size limit (ulimit -f), or record shorter takes; "
             "then continue it with: corvane resume '" +
                 take_ + "' -i REST");
  const Bytes now = ReadFile(take_);
  EXPECT_GT(SplitFrames(now).size(), SplitFrames(held).size());
  EXPECT_EQ(Slice(now, 0, held.size()), held);
  EXPECT_EQ(nlohmann::json::parse(run.out)["endedBy"], "error");
}

TEST_F(ResumeRefusalTest, TheWayToGoOnWithAPipeNamesThePipe) {
  WriteFile(Path("in.pcm"), Noise(480000));
  const ChildResult run =
      CorvaneInShell("ulimit -f 16", "< " + Path("in.pcm"),
                     {"record", take_, "-i", "-", "-r", "48000", "-c", "1"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("; then continue it with: corvane resume '" + take_ +
                         "' -i -\n"),
            std::string::npos)
      << run.err;
}

}  // namespace
}  // namespace corvane_test
