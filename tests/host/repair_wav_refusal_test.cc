// `corvane repair-wav` where 44 bytes would damage what is there: it is refused
// in one sentence, and not a byte changes.
#include <sndfile.h>
#include <sys/stat.h>

#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class RepairWavRefusalTest : public ProgramTest {
 protected:
  // Repairs what the file holds, which must fail with this and change nothing.
  void ShouldRefuse(const std::string& path, const std::string& reason) {
    const Bytes held = ReadFile(path);
    const ChildResult run =
        Corvane({"repair-wav", path, "-r", "48000", "-c", "1"});
    ShouldFail(run, path + ": " + reason);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(path), held);
  }

  // A WAV file whose header has a list before the audio, as ffmpeg's own have.
  void WriteWithList() {
    const Bytes plain = ReadFile(MakeWav("in.wav", Sine(1000)));
    WriteFile(wav_,
              Concat(Concat(Slice(plain, 0, 36), list_), Slice(plain, 36)));
  }

  // How to get at the audio of a WAV file that is refused.
  static std::string WayAround(const std::string& path,
                               const std::string& copy) {
    return "; it was left alone; save its audio with: ffmpeg -ignore_length 1 "
           "-i '" +
           path + "' -c:a copy '" + copy + "'";
  }

  const std::string wav_ = Path("take.wav");
  const Bytes list_ = {'L', 'I', 'S', 'T', 4, 0, 0, 0, 'I', 'N', 'F', 'O'};
};

TEST_F(RepairWavRefusalTest, OtherSoundFilesAreNamed) {
  const std::vector<std::pair<int, std::string>> formats = {
      {SF_FORMAT_FLAC, "FLAC"},
      {SF_FORMAT_AIFF, "AIFF"},
      {SF_FORMAT_RF64, "RF64 (WAV of more than 4 GiB)"},
      {SF_FORMAT_W64, "Wave64"},
      {SF_FORMAT_CAF, "CAF"},
      {SF_FORMAT_AU, "AU"}};
  for (const auto& [format, name] : formats) {
    WriteShorts(wav_, format | SF_FORMAT_PCM_16, 48000, 1, Samples(Sine(1000)));
    ShouldRefuse(wav_, "it starts like " + name + "; it was left alone");
  }
}

TEST_F(RepairWavRefusalTest, ACaptureIsNotAWavFile) {
  const std::string take = Path("take.aac");
  ASSERT_EQ(
      Corvane({"record", take, "-i", MakeWav("in.wav", Sine(4096))}).status, 0);
  ShouldRefuse(take, "it starts like ADTS; it was left alone");
}

TEST_F(RepairWavRefusalTest, TextIsNotAWavFile) {
  WriteFile(wav_, Bytes(100, 'x'));
  ShouldRefuse(wav_, "it does not start like WAV; it was left alone");
}

TEST_F(RepairWavRefusalTest, AFileShorterThanAHeaderHoldsNoAudio) {
  WriteFile(wav_, Slice(ReadFile(MakeWav("in.wav", Sine(10))), 0, 43));
  ShouldRefuse(wav_,
               "it is shorter than a header, so there is no audio in it; it "
               "was left alone");
}

TEST_F(RepairWavRefusalTest, AnExtensibleHeaderIsLongerThanTheNewOne) {
  WriteShorts(wav_, SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 48000, 1,
              Samples(Sine(1000)));
  ShouldRefuse(wav_,
               "its header is longer than 44 bytes (WAVE_FORMAT_EXTENSIBLE), "
               "and the rest of it would become audio" +
                   WayAround(wav_, Path("take-converted.wav")));
}

TEST_F(RepairWavRefusalTest, AListBeforeTheAudioWouldBecomeAudio) {
  WriteWithList();
  ShouldRefuse(wav_,
               "its header is longer than 44 bytes (a chunk \"LIST\" before "
               "the audio), and the rest of it would become audio" +
                   WayAround(wav_, Path("take-converted.wav")));
}

TEST_F(RepairWavRefusalTest, TheWayAroundSavesTheAudioAndNoMore) {
  WriteWithList();
  Bytes file = ReadFile(wav_);
  for (size_t at = 52; at < 56; ++at) file[at] = 0;  // the data's size
  WriteFile(wav_, file);
  const ChildResult ffmpeg =
      Child({"/bin/sh", "-c",
             "ffmpeg -v error -nostdin -ignore_length 1 -i '" + wav_ +
                 "' -c:a copy '" + Path("take-converted.wav") + "'"},
            {})
          .Wait();
  ASSERT_EQ(ffmpeg.status, 0) << ffmpeg.err;
  EXPECT_EQ(WavData(Path("take-converted.wav")), Sine(1000));
}

TEST_F(RepairWavRefusalTest, OtherSamplesWouldBecomeNoise) {
  const std::vector<std::pair<int, std::string>> formats = {
      {SF_FORMAT_PCM_24, "its samples have 24 bits, not 16"},
      {SF_FORMAT_PCM_U8, "its samples have 8 bits, not 16"},
      {SF_FORMAT_FLOAT, "its audio is not PCM (format 3)"},
      {SF_FORMAT_ULAW, "its audio is not PCM (format 7)"}};
  for (const auto& [format, reason] : formats) {
    WriteShorts(wav_, SF_FORMAT_WAV | format, 48000, 1, Samples(Sine(1000)));
    ShouldRefuse(wav_, reason + WayAround(wav_, Path("take-converted.wav")));
  }
}

TEST_F(RepairWavRefusalTest, ChunksBehindTheAudioWouldBecomeAudio) {
  WriteFile(wav_, Concat(ReadFile(MakeWav("in.wav", Sine(1000))), list_));
  ShouldRefuse(wav_,
               "its header is right, and the 12 bytes of other chunks behind "
               "the audio would become audio; it was left alone");
}

TEST_F(RepairWavRefusalTest, ForceIsOfferedInASentenceOfItsOwn) {
  WriteFile(wav_, Bytes(100, 'x'));
  ShouldFail(Corvane({"repair-wav", wav_}),
             wav_ + ": --force writes the 44 bytes all the same");
}

TEST_F(RepairWavRefusalTest, WhatHoldsNothingIsNamed) {
  ShouldFail(Corvane({"repair-wav", wav_}),
             wav_ + ": No such file or directory; check the name");
  EXPECT_FALSE(Exists(wav_));
  ShouldFail(Corvane({"repair-wav", Path(".")}),
             Path(".") + ": this is a folder; name a file in it");
  WriteFile(wav_, {});
  ShouldFail(Corvane({"repair-wav", wav_, "--force"}),
             wav_ + ": the file is empty: there is no audio in it");
}

TEST_F(RepairWavRefusalTest, AReadOnlyFileComesWithTheWayOut) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  const Bytes held = ReadFile(wav);
  ASSERT_EQ(chmod(wav.c_str(), S_IRUSR), 0);
  const ChildResult run = CorvaneUnprivileged({"repair-wav", wav, "-c", "2"});
  ShouldFail(run, wav +
                      ": Failed to patch WAV header: Permission denied; make "
                      "it writable first: chmod u+w '" +
                      wav + "'");
  ShouldFail(run, wav +
                      ": the audio behind the header is untouched; repair it "
                      "again with: corvane repair-wav '" +
                      wav + "' -r 48000 -c 2");
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(ReadFile(wav), held);
}

TEST_F(RepairWavRefusalTest, NumbersOutOfRangeAreRefused) {
  const std::string wav = MakeWav("in.wav", Sine(1000));
  for (const Words& option :
       {Words{"-r", "0"}, Words{"-c", "0"}, Words{"-c", "32768"}}) {
    EXPECT_EQ(Corvane({"repair-wav", wav, option[0], option[1]}).status, 2)
        << option[0] << " " << option[1];
  }
}

}  // namespace
}  // namespace corvane_test
