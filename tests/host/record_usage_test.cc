// What the command line takes and refuses, before anything is recorded.
#include "host/record_fixture.h"
#include "support/pcm.h"

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

TEST_F(UsageTest, AnUnknownCommandIsRefused) {
  EXPECT_EQ(Corvane({"erase", take_}).status, 2);
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
  ShouldRefuse(Corvane({"record", take_}), mistake);
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

TEST_F(UsageTest, HelpFitsATerminalOfEightyColumns) {
  for (const Words& words :
       {Words{"--help"}, Words{"record", "--help"}, Words{"resume", "--help"},
        Words{"finalize", "--help"}, Words{"repair-wav", "--help"}}) {
    const ChildResult run = Corvane(words);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_NE(run.out.find("Usage: corvane"), std::string::npos) << run.out;
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
