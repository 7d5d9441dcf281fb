// The program with a sound device: which input it takes, and what it says when
// a device can't be had or ends.
#include <fcntl.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <nlohmann/json.hpp>

#include "host/record_fixture.h"
#include "host/sound_config.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

using nlohmann::json;

// Ends by itself after a quarter of a second.
constexpr char kShort[] =
    "pcm.!default { type corvane_faults script \"12000 gone 0\" }\n";

class RecordDeviceTest : public ProgramTest {
 protected:
  ChildResult Run(const std::string& devices, const Words& arguments,
                  const std::string& redirect = "</dev/null") {
    const SoundConfig config(devices);
    std::string prepare;
    for (const auto& [name, value] : config.environment()) {
      prepare += "export " + name + "='" + value + "'\n";
    }
    return CorvaneInShell(prepare, redirect, arguments);
  }

  // It recorded what the short device has, and told of its end.
  void ShouldRecord(const ChildResult& run, const std::string& device) {
    ShouldFail(run, device + ": the device has vanished (No such device)");
    ASSERT_NE(run.out, "");
    EXPECT_EQ(json::parse(run.out)["sampleFrames"], 12000);
    EXPECT_EQ(json::parse(run.out)["endedBy"], "error");
  }

  void ShouldRefuse(const ChildResult& run, const std::string& sentence,
                    int status = 2) {
    EXPECT_EQ(run.status, status);
    EXPECT_EQ(run.out, "");
    ASSERT_NE(run.err, "");
    EXPECT_EQ(Lines(run.err).front(), "corvane: " + sentence);
    EXPECT_FALSE(Exists(take_));
  }

  const std::string take_ = Path("take.aac");
  const Words record_ = {"record", take_};
};

std::string Meant(const std::string& input) {
  return "standard input is " + input +
         "; say -i - for raw sound from it, or -D default for the microphone";
}

TEST_F(RecordDeviceTest, NothingOnStandardInputMeansTheMicrophone) {
  ShouldRecord(Run(kShort, record_), "the microphone");
  ShouldRecord(Run(kShort, record_, "<&-"), "the microphone");
}

TEST_F(RecordDeviceTest, ATerminalOnStandardInputMeansTheMicrophone) {
  int ends[2];
  ASSERT_EQ(openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr), 0);
  ShouldRecord(Run(kShort, record_, "<&" + std::to_string(ends[1])),
               "the microphone");
  close(ends[0]);
  close(ends[1]);
}

TEST_F(RecordDeviceTest, WhatMayBeSoundOnStandardInputIsRefused) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  ShouldRefuse(Run(kShort, record_, "<&" + std::to_string(ends[1])),
               Meant("a socket"));
  close(ends[0]);
  close(ends[1]);
  ShouldRefuse(Run(kShort, record_, ""), Meant("a pipe"));
  ShouldRefuse(Run(kShort, record_, "<" + MakeWav("in.wav", Sine(100))),
               Meant("a file"));
  ShouldRefuse(Run(kShort, record_, "</dev/zero"), Meant("a device"));
}

TEST_F(RecordDeviceTest, ANamedDeviceLeavesStandardInputAlone) {
  const std::string file = MakeWav("in.wav", Sine(100));
  const SoundConfig config(kShort);
  // The shell reads on where the program has left the file.
  const Words argv = {"/bin/sh",
                      "-c",
                      "\"$1\" record -D default \"$2\" 2>/dev/null >&2; wc -c",
                      "sh",
                      CORVANE_PROGRAM,
                      take_};
  const ChildResult run =
      Child({"/bin/sh", "-c", "exec \"$@\" <\"$0\"", file, argv[0], argv[1],
             argv[2], argv[3], argv[4], argv[5]},
            [&] {
              ChildSetup setup;
              setup.environment = config.environment();
              return setup;
            }())
          .Wait();
  EXPECT_EQ(std::stoll(run.out), FileSize(file)) << run.err;
  EXPECT_TRUE(Exists(take_));
}

TEST_F(RecordDeviceTest, OptionsOfAnotherInputAreRefused) {
  ShouldRefuse(Run(kShort, {"record", take_, "-D", "default", "-i", "-"}),
               "-D is for a device, -i for a file or standard input; leave one "
               "of them out");
  ShouldRefuse(Run(kShort, {"record", take_, "--raw"}),
               "--raw is for samples on standard input, which are asked for "
               "with -i -");
  ShouldRefuse(Run(kShort, {"record", take_, "--realtime"}),
               "--realtime is for files; a microphone keeps its own time");
}

TEST_F(RecordDeviceTest, ATakeThatLostItsDeviceSaysHowToGoOn) {
  const std::string command =
      "corvane: continue it with: corvane resume '" + take_ + "'";
  const ChildResult usual = Run(kShort, record_);
  EXPECT_EQ(Lines(usual.err).back(), command);
  const ChildResult named =
      Run(kShort, {"record", "--device", "default", take_});
  EXPECT_EQ(Lines(named.err).back(), command + " -D 'default'");
}

TEST_F(RecordDeviceTest, ATakeGoesOnInItsOwnFormat) {
  ShouldRecord(Run(kShort, {"record", take_, "-r", "22050", "-c", "2"}),
               "the microphone");
  const ChildResult run = Run(kShort, {"resume", take_});
  ShouldRecord(run, "the microphone");
  EXPECT_EQ(json::parse(run.out)["sampleRate"], 22050);
  EXPECT_EQ(json::parse(run.out)["channels"], 2);
  EXPECT_GT(json::parse(run.out)["keptDurationMs"], 500);
  EXPECT_EQ(DecoderComplaints(take_), "");
}

TEST_F(RecordDeviceTest, NoDeviceAtAllIsToldWithTheWayOut) {
  ShouldRefuse(Run("", record_),
               "the microphone: there is none: no sound card was found, and no "
               "sound server runs; plug one in, and look with: corvane devices",
               1);
}

TEST_F(RecordDeviceTest, WithoutASessionItsServersFolderIsNamed) {
  const SoundConfig config("");
  const ChildResult run = CorvaneInShell(
      "export ALSA_CONFIG_PATH='" + config.environment()["ALSA_CONFIG_PATH"] +
          "'\nunset XDG_RUNTIME_DIR\n",
      "</dev/null", record_);
  ShouldRefuse(run,
               "the microphone: there is none: no sound card was found, and no "
               "sound server runs; plug one in, and look with: corvane "
               "devices; a server that runs is found with "
               "XDG_RUNTIME_DIR=/run/user/" +
                   std::to_string(getuid()) +
                   ", which isn't set here, as under cron",
               1);
}

TEST_F(RecordDeviceTest, AnUnknownDeviceNamesTheList) {
  ShouldRefuse(Run(kShort, {"record", "-D", "hw:CARD=Gone,DEV=1", take_}),
               "device hw:CARD=Gone,DEV=1: there is no such device; see those "
               "there are with: corvane devices",
               1);
}

TEST_F(RecordDeviceTest, AServerThatDoesNotRunIsNamedAndNothingTouched) {
  WriteFile(Path("older.aac"), {1, 2, 3});
  const ChildResult run =
      Run("pcm.!default { type pulse server \"" + Path("no-server") + "\" }\n",
          {"record", Path("older.aac")});
  ShouldFail(run,
             "the microphone: the sound server doesn't answer; start it, or "
             "take a device that needs none: corvane devices");
  EXPECT_EQ(ReadFile(Path("older.aac")), Bytes({1, 2, 3}));
}

TEST_F(RecordDeviceTest, ALossIsALineOfTheLog) {
  const ChildResult run =
      Run("pcm.!default { type corvane_faults\n"
          "  script \"9600 overrun 300 66000 gone 0\" }\n",
          {"record", "--quiet", take_});
  EXPECT_NE(
      run.err.find(
          " ms of sound are missing after 0:00.2 of listening: the device's "
          "buffer ran over; the take goes on\n"),
      std::string::npos)
      << run.err;
  EXPECT_EQ(json::parse(run.out)["sampleFrames"], 66000);
}

TEST_F(RecordDeviceTest, AlsaSaysNothingByItself) {
  const std::string broken =
      "pcm.!default { type plug slave.pcm \"nowhere\" }\n";
  const ChildResult run = Run(broken, record_);
  EXPECT_EQ(Lines(run.err).size(), 1U) << run.err;
  const ChildResult verbose = Run(broken, {"record", "-v", take_});
  EXPECT_NE(verbose.err.find("alsa: "), std::string::npos) << verbose.err;
}

// Endless, and as fast as it is read.
TEST_F(RecordDeviceTest, ADeviceThatCannotBeWaitedForIsReadAllTheSame) {
  const SoundConfig config("pcm.!default { type null }\n");
  ChildSetup setup;
  setup.environment = config.environment();
  const auto child = StartCorvane({"record", "-D", "default", take_}, setup);
  child->AwaitError("AAC encoder aac started");
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err.find("warning"), std::string::npos) << run.err;
}

TEST_F(RecordDeviceTest, ADeviceFedThroughAPipeIsRecorded) {
  const std::string pipe = Path("in.fifo");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const SoundConfig config(
      "pcm.!default { type file slave.pcm { type null }\n"
      "  file /dev/null infile \"" +
      pipe + "\" format raw }\n");
  ChildSetup setup;
  setup.environment = config.environment();
  const auto child = StartCorvane({"record", "-D", "default", take_}, setup);
  WriteFile(pipe, Sine(2 * 48000));
  child->AwaitError("AAC encoder aac started");
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(DecoderComplaints(take_), "");
}

TEST_F(RecordDeviceTest, SignalsEndATakeAndSealIt) {
  const SoundConfig config("pcm.!default { type corvane_faults }\n");
  ChildSetup setup;
  setup.environment = config.environment();
  const auto child = StartCorvane({"record", "-D", "default", take_}, setup);
  child->AwaitError("AAC encoder aac started");
  child->Signal(SIGINT);
  const ChildResult run = child->Wait();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(json::parse(run.out)["endedBy"], "signal");
}

}  // namespace
}  // namespace corvane_test
