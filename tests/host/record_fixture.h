// The program as a user runs it, in a folder of its own.
#ifndef CORVANE_TESTS_HOST_RECORD_FIXTURE_H_
#define CORVANE_TESTS_HOST_RECORD_FIXTURE_H_

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/child_process.h"
#include "host/sound_file.h"
#include "support/files.h"

namespace corvane_test {

using Words = std::vector<std::string>;

// The lines of a text, without their ends.
Words Lines(const std::string& text);

class ProgramTest : public ::testing::Test {
 protected:
  std::string Path(const std::string& name) const { return dir_.Path(name); }

  // Runs `corvane` with these words to its end.
  ChildResult Corvane(const Words& arguments, const ChildSetup& setup = {});
  // The same with these bytes on standard input.
  ChildResult CorvaneFed(const Bytes& input, const Words& arguments);
  // The same from a shell that first runs `prepare`, or changes the streams of
  // the program by `redirect`.
  ChildResult CorvaneInShell(const std::string& prepare,
                             const std::string& redirect,
                             const Words& arguments);
  // The same where what a file's permissions forbid is forbidden to root too.
  ChildResult CorvaneUnprivileged(const Words& arguments);
  // Starts it and leaves it running.
  std::unique_ptr<Child> StartCorvane(const Words& arguments,
                                      const ChildSetup& setup = {});

  // It failed, and said this sentence on a line of its own.
  static void ShouldFail(const ChildResult& run, const std::string& sentence);
  // What ffmpeg says against a file: nothing when it decodes it to its end.
  static std::string DecoderComplaints(const std::string& path);

  // A WAV file in the folder with this PCM; its path.
  std::string MakeWav(const std::string& name, const Bytes& pcm,
                      int rate = 48000, int channels = 1);

 private:
  TempDir dir_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_RECORD_FIXTURE_H_
