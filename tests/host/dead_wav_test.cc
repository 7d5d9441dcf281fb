// A WAV file whose recorder died, as the audio of a take.
#include "looks/dead_wav.h"

#include "host/record_fixture.h"
#include "looks/wav_look.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using corvane::objection_to_dead_wav;

class DeadWavTest : public ProgramTest {
 protected:
  void Set(const corvane::WavField& field, uint32_t value) {
    for (size_t i = 0; i < field.width; ++i) {
      file_[field.offset + i] = static_cast<uint8_t>(value >> (8 * i));
    }
  }

  std::string Objection() {
    WriteFile(wav_, file_);
    return objection_to_dead_wav(wav_);
  }

  std::string Hides(uint32_t named, size_t held) const {
    return "its header names " + std::to_string(named) + " of the " +
           std::to_string(held) +
           " bytes of audio in it, as when its recorder died; repair it first "
           "with: corvane repair-wav '" +
           wav_ + "'";
  }

  // Ten seconds in a canonical file.
  const std::string wav_ = MakeWav("dead.wav", Sine(480000));
  Bytes file_ = ReadFile(wav_);
  static constexpr size_t kAudio = 960000;
};

TEST_F(DeadWavTest, AWholeFileIsFine) { EXPECT_EQ(Objection(), ""); }

TEST_F(DeadWavTest, SizesOfZeroHideAllOfIt) {
  Set(corvane::kRiffSize, 0);
  Set(corvane::kDataSize, 0);
  EXPECT_EQ(Objection(), Hides(0, kAudio));
}

TEST_F(DeadWavTest, ASizeOfBeforeHidesTheRest) {
  Set(corvane::kDataSize, 96000);
  EXPECT_EQ(Objection(), Hides(96000, kAudio));
}

TEST_F(DeadWavTest, MoreThanThereIsIsFine) {
  for (const uint32_t size : {960001U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    Set(corvane::kDataSize, size);
    EXPECT_EQ(Objection(), "") << size;
  }
}

TEST_F(DeadWavTest, ChunksBehindTheAudioAreNotAudio) {
  const std::string chunk("LIST\4\0\0\0INFO", 12);
  file_ = Concat(file_, Bytes(chunk.begin(), chunk.end()));
  EXPECT_EQ(Objection(), "");
  file_ = Concat(file_, Bytes(4096, 'x'));
  EXPECT_EQ(Objection(), Hides(kAudio, kAudio + 12 + 4096));
}

TEST_F(DeadWavTest, AShortTagBehindTheAudioIsNotMissed) {
  file_ = Concat(file_, Bytes(4095, 'x'));
  EXPECT_EQ(Objection(), "");
  file_.push_back('x');
  EXPECT_EQ(Objection(), Hides(kAudio, kAudio + 4096));
}

TEST_F(DeadWavTest, AHeaderThatWasNeverWrittenIsNamed) {
  const Bytes whole = file_;
  const std::string zeros =
      "there are zeros where a WAV file has its header; if its recorder died, "
      "repair it first with: corvane repair-wav '" +
      wav_ + "'";
  for (const size_t from : {0, 12, 36}) {
    file_ = whole;
    std::fill(file_.begin() + static_cast<ptrdiff_t>(from), file_.begin() + 44,
              0);
    EXPECT_EQ(Objection(), zeros + (from == 36 ? "" : " -r HZ -c N")) << from;
  }
}

// repair-wav would refuse them: its header is shorter.
TEST_F(DeadWavTest, AnotherLayoutsAudioIsSavedByFfmpeg) {
  const std::string chunk("LIST\4\0\0\0INFO", 12);
  Set(corvane::kDataSize, 0);
  file_.insert(file_.begin() + 36, chunk.begin(), chunk.end());
  EXPECT_EQ(Objection(),
            "its header names 0 of the 960000 bytes of audio in it, as when "
            "its recorder died; save its audio first with: ffmpeg "
            "-ignore_length 1 -i '" +
                wav_ + "' -c:a copy '" + Path("dead-converted.wav") + "'");
}

TEST_F(DeadWavTest, OtherFilesAreNotItsBusiness) {
  EXPECT_EQ(objection_to_dead_wav(Path("gone.wav")), "");
  EXPECT_EQ(objection_to_dead_wav(Path(".")), "");
  const std::vector<Bytes> contents = {
      {},           Bytes(1000, 'x'),    Bytes(44, 0),
      Bytes(10, 0), Slice(file_, 0, 44), Slice(file_, 0, 20)};
  for (const Bytes& content : contents) {
    file_ = content;
    EXPECT_EQ(Objection(), "") << content.size();
  }
}

TEST_F(DeadWavTest, TheProgramRefusesItAndLeavesTheTakeAlone) {
  const std::string take = Path("take.aac");
  ASSERT_EQ(Corvane({"record", take, "-i", wav_}).status, 0);
  const Bytes held = ReadFile(take);
  Set(corvane::kDataSize, 96000);
  WriteFile(wav_, file_);
  for (const std::string command : {"record", "resume"}) {
    const ChildResult run = Corvane({command, take, "-i", wav_});
    ShouldFail(run, wav_ + ": " + Hides(96000, kAudio));
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(take), held);
    EXPECT_FALSE(Exists(Path("take.orphan.aac")));
  }
  // As it was told to.
  ASSERT_EQ(Corvane({"repair-wav", wav_}).status, 0);
  EXPECT_EQ(Corvane({"resume", take, "-i", wav_}).status, 0);
}

TEST_F(DeadWavTest, AFileThatWasCutShortIsWarnedOf) {
  MakeWav("in.wav", Sine(48000));
  TruncateFile(Path("in.wav"), 44 + 48000);
  const ChildResult run =
      Corvane({"record", Path("take.aac"), "-i", Path("in.wav")});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(Lines(run.err).front(),
            "corvane: " + Path("in.wav") +
                ": warning: of the 96000 bytes of audio that its header "
                "names, 48000 are there: it was cut short, or is still being "
                "written");
}

TEST_F(DeadWavTest, SizesOfAWriterThatDoesNotKnowThemAreNoWarning) {
  Bytes wav = ReadFile(MakeWav("in.wav", Sine(48000)));
  std::fill_n(wav.begin() + 40, 4, 0xFF);
  WriteFile(Path("in.wav"), wav);
  EXPECT_EQ(corvane::shortage_of_wav(Path("in.wav")), "");
  EXPECT_EQ(corvane::shortage_of_wav(MakeWav("b.wav", Sine(48000))), "");
}

}  // namespace
}  // namespace corvane_test
