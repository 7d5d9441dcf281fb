// What the command line takes and refuses, before anything is recorded.
#include <array>

#include "host/record_fixture.h"
#include "support/pcm.h"
#include "terminal/console.h"

namespace corvane_test {
namespace {

class UsageTest : public ProgramTest {
 protected:
  // Nothing on standard output, and a first line that names the mistake.
  static void ShouldRefuse(const ChildResult& run, const std::string& mistake) {
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    ASSERT_FALSE(run.err.empty());
    EXPECT_EQ(Lines(run.err).front(), "corvane: " + mistake);
  }

  const std::string take_ = Path("take.aac");
};

TEST_F(UsageTest, ACommandIsRequired) {
  ShouldRefuse(Corvane({}), "A subcommand is required");
}

TEST_F(UsageTest, AnUnknownCommandNamesTheNearestOne) {
  const std::vector<std::array<const char*, 2>> meant = {
      {"recrod", "record"},
      {"rec", "record"},
      {"finalise", "finalize"},
      {"repair", "repair-wav"}};
  for (const auto& [word, command] : meant) {
    ShouldRefuse(Corvane({word, take_}), std::string("there is no command \"") +
                                             word + "\"; did you mean " +
                                             command + "?");
  }
}

TEST_F(UsageTest, AnUnknownCommandLikeNoneNamesThemAll) {
  for (const std::string word : {"", "erase", "take.aac", "x\ny"}) {
    ShouldRefuse(Corvane({word, take_}),
                 "there is no command \"" + corvane::printable(word) +
                     "\"; there are record, resume, finalize, "
                     "devices, repair-wav, info");
  }
}

TEST_F(UsageTest, ANameTakenForOptionsComesWithTheDashes) {
  const std::string hint =
      "; if -interview.aac is a name, put it behind --, or write "
      "./-interview.aac";
  for (const Words& words :
       {Words{"finalize", "-interview.aac"},
        Words{"record", "-i", "in.wav", "-interview.aac"},
        Words{"finalize", "-interview.aac", "--", "-other.aac"}}) {
    const ChildResult run = Corvane(words);
    EXPECT_EQ(run.status, 2) << words[0];
    EXPECT_NE(run.err.find(hint), std::string::npos) << run.err;
  }
}

TEST_F(UsageTest, AMistypedOptionIsNotTakenForAName) {
  for (const Words& words : {Words{"finalize", "--froce", take_},
                             Words{"record", "-r", "-48000", "-c", "1", take_},
                             Words{"finalize", "--", "-interview.aac", ""}}) {
    const ChildResult run = Corvane(words);
    EXPECT_EQ(run.status, 2) << words[1];
    EXPECT_EQ(run.err.find("is a name"), std::string::npos) << run.err;
  }
}

TEST_F(UsageTest, AnEmptyNameIsRefused) {
  ShouldRefuse(Corvane({"record", "", "-i", "in.wav"}),
               "OUT.aac: the name is empty");
  ShouldRefuse(Corvane({"resume", take_, "-i", ""}), "-i: the name is empty");
  ShouldRefuse(Corvane({"finalize", take_, ""}), "OUT.aac: the name is empty");
  ShouldRefuse(Corvane({"repair-wav", ""}), "FILE.wav: the name is empty");
  ShouldRefuse(Corvane({"info", take_, ""}), "FILE: the name is empty");
}

TEST_F(UsageTest, StandardOutputIsNoPlaceForACapture) {
  const std::string mistake =
      ": standard output can't hold it; name a file (./- if that is its name)";
  ShouldRefuse(Corvane({"record", "-", "-i", "in.wav"}), "OUT.aac" + mistake);
  ShouldRefuse(Corvane({"resume", "-", "-i", "in.wav"}), "OUT.aac" + mistake);
  ShouldRefuse(Corvane({"finalize", "-"}), "OUT.aac" + mistake);
  ShouldRefuse(Corvane({"repair-wav", "-"}), "FILE.wav" + mistake);
}

TEST_F(UsageTest, StandardInputIsNoPlaceToLook) {
  ShouldRefuse(Corvane({"info", "-"}),
               "FILE: standard input can't be looked at; name a file (./- if "
               "that is its name)");
}

// Told before any audio has come, and with an older take still in its place.
TEST_F(UsageTest, AFormatThatAdtsHasNoNumberForIsRefused) {
  Corvane({"record", take_, "-i", MakeWav("in.wav", Sine(4096))});
  const Bytes held = ReadFile(take_);
  for (const std::string command : {"record", "resume"}) {
    ShouldRefuse(
        Corvane({command, "-q", take_, "-i", "-", "-r", "44000", "-c", "1"}),
        "standard input: ADTS has no index for 44000 Hz; feed it "
        "44100 Hz instead, and say so with -r and -c");
    ShouldRefuse(
        Corvane({command, "-q", take_, "-i", "-", "-r", "48000", "-c", "7"}),
        "standard input: ADTS cannot express 7 channels; feed it "
        "48000 Hz and 1 to 6 channels instead, and say so with -r "
        "and -c");
  }
  EXPECT_EQ(ReadFile(take_), held);
}

TEST_F(UsageTest, ATakeNeedsAName) {
  ShouldRefuse(Corvane({"record"}), "OUT.aac is required");
}

TEST_F(UsageTest, NumbersOutOfRangeAreRefused) {
  const std::vector<Words> wrong = {{"-r", "0"},
                                    {"-r", "-48000"},
                                    {"-r", "high"},
                                    {"-c", "0"},
                                    {"-b", "0"},
                                    {"-b", "64kbit"},

                                    {"--chunk-ms", "0"},
                                    {"--chunk-ms", "1001"},
                                    {"-b", "9223372036854775807k"},
                                    {"--flush-every", "nan"},
                                    {"--flush-every", "-1"},
                                    {"--flush-every", "1e9"},
                                    {"--flush-every", ""},
                                    {"--flush-every", "often"}};
  for (const Words& option : wrong) {
    const ChildResult run =
        Corvane({"record", take_, "-i", "in.wav", option[0], option[1]});
    EXPECT_EQ(run.status, 2) << option[0] << " " << option[1] << run.err;
    EXPECT_EQ(run.out, "");
  }
  EXPECT_FALSE(Exists(take_));
}

TEST_F(UsageTest, RawInputNeedsItsRateAndChannels) {
  const std::string mistake =
      "raw audio on standard input needs its rate and channels, as in -r "
      "48000 -c 1; a file is named with -i";
  ShouldRefuse(Corvane({"record", take_, "-i", "-"}), mistake);
  ShouldRefuse(Corvane({"record", take_, "-i", "-", "-r", "48000"}), mistake);
  ShouldRefuse(Corvane({"record", take_, "-i", "-", "-c", "1"}), mistake);
  EXPECT_FALSE(Exists(take_));
}

TEST_F(UsageTest, OptionsThatContradictTheFileAreRefused) {
  const std::string wav = MakeWav("in.wav", Sine(1000), 44100);
  ShouldRefuse(Corvane({"record", take_, "-i", wav, "-r", "48000"}),
               wav +
                   ": the file holds 1 channel(s) at 44100 Hz; leave out -r "
                   "and -c, which are for raw audio");
  EXPECT_FALSE(Exists(take_));
  EXPECT_EQ(
      Corvane({"record", take_, "-i", wav, "-r", "44100", "-c", "1"}).status,
      0);
}

TEST_F(UsageTest, RawIsNotForAFileThatIsNamed) {
  ShouldRefuse(
      Corvane({"record", take_, "--raw", "-i", MakeWav("in.wav", Sine(1000))}),
      "--raw is for samples on standard input; leave it out, or pipe the file "
      "in instead of naming it with -i");
  EXPECT_FALSE(Exists(take_));
}

TEST_F(UsageTest, HelpFitsATerminalOfEightyColumns) {
  for (const Words& words :
       {Words{"--help"}, Words{"record", "--help"}, Words{"resume", "--help"},
        Words{"finalize", "--help"}, Words{"devices", "--help"},
        Words{"repair-wav", "--help"}, Words{"info", "--help"}}) {
    const ChildResult run = Corvane(words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("Usage: corvane"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\n  corvane "), std::string::npos) << run.out;
    for (const std::string& line : Lines(run.out)) {
      EXPECT_LE(line.size(), 80U) << line;
    }
  }
}

TEST_F(UsageTest, TheVersionIsOneLine) {
  const ChildResult run = Corvane({"--version"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out.rfind("corvane ", 0), 0U) << run.out;
  EXPECT_EQ(Lines(run.out).size(), 1U) << run.out;
}

}  // namespace
}  // namespace corvane_test
