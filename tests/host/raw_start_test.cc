// Raw audio on standard input that is a file of audio in truth.
#include <fcntl.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <thread>

#include "audio/audio_source.h"
#include "host/record_fixture.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

class RawStartTest : public ProgramTest {
 protected:
  // All that the source gives.
  Bytes Drain() {
    Bytes all;
    Bytes buffer(960);
    while (const size_t got = source_->Read(buffer.data(), buffer.size())) {
      all.insert(all.end(), buffer.begin(),
                 buffer.begin() + static_cast<ptrdiff_t>(got));
    }
    return all;
  }

  std::unique_ptr<corvane::AudioSource> source_;
};

// A pipe with these bytes in it, in one piece; its end to read from.
int PipeWith(const Bytes& bytes) {
  int ends[2];
  EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
  EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()),
            static_cast<ssize_t>(bytes.size()));
  close(ends[1]);
  return ends[0];
}

TEST_F(RawStartTest, RawBytesThatStartLikeAFileAreRefusedOrTaken) {
  for (const std::string mark : {"RIFF", "fLaC", "OggS", "ID3"}) {
    const Bytes bytes = Concat(Bytes(mark.begin(), mark.end()), Bytes(96, 1));
    const int refused = PipeWith(bytes);
    source_ = corvane::open_raw_input(refused, {48000, 1}, false);
    EXPECT_EQ(Drain(), Bytes()) << mark;
    EXPECT_NE(source_->error().find(
                  ", not like raw samples; save it as a file and name that "
                  "with -i, or take it as samples with --raw"),
              std::string::npos)
        << source_->error();
    close(refused);

    const int taken = PipeWith(bytes);
    source_ = corvane::open_raw_input(taken, {48000, 1}, true);
    EXPECT_EQ(Drain(), bytes);
    EXPECT_EQ(source_->error(), "");
    close(taken);
  }
}

TEST_F(RawStartTest, TheStartOfRawBytesMayComeInPieces) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  source_ = corvane::open_raw_input(ends[0], {48000, 1}, false);
  ASSERT_EQ(write(ends[1], "RI", 2), 2);
  std::thread writer([&] {
    EXPECT_EQ(write(ends[1], "FF....WAVE", 10), 10);
    close(ends[1]);
  });
  EXPECT_EQ(Drain(), Bytes());
  EXPECT_EQ(source_->error().rfind("it starts like WAV, ", 0), 0U)
      << source_->error();
  writer.join();
  close(ends[0]);
}

TEST_F(RawStartTest, WhatOnlyBeginsLikeAMarkIsSamples) {
  for (const std::string text : {"R", "RIF", "ID", ".RIFF"}) {
    const Bytes bytes(text.begin(), text.end());
    const int fd = PipeWith(bytes);
    source_ = corvane::open_raw_input(fd, {48000, 1}, false);
    EXPECT_EQ(Drain(), bytes);
    EXPECT_EQ(source_->error(), "");
    close(fd);
  }
}

TEST_F(RawStartTest, TheProgramNamesTheFileUnlessItIsToBeSamples) {
  const std::string wav = MakeWav("in.wav", Sine(48000));
  const std::string take = Path("take.aac");
  const auto feed = [&](const std::string& command, Words arguments) {
    arguments.insert(arguments.begin(), {command, take, "-i", "-"});
    arguments.insert(arguments.end(), {"-r", "48000", "-c", "1"});
    return CorvaneInShell("", "<" + wav, arguments);
  };
  const ChildResult taken = feed("record", {"--raw"});
  EXPECT_EQ(taken.status, 0) << taken.err;
  EXPECT_EQ(nlohmann::json::parse(taken.out)["sampleFrames"],
            FileSize(wav) / 2);

  const Bytes held = ReadFile(take);
  const std::string sentence =
      "standard input: it starts like WAV, not like raw samples; save it as a "
      "file and name that with -i, or take it as samples with --raw";
  ShouldFail(feed("resume", {}), sentence);
  EXPECT_EQ(ReadFile(take), held);
  ShouldFail(feed("record", {}), sentence);
  EXPECT_EQ(ReadFile(take), held);
  EXPECT_FALSE(Exists(Path("take.orphan.aac")));
}

}  // namespace
}  // namespace corvane_test
