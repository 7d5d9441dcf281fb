#include "host/record_fixture.h"

#include <sstream>

namespace corvane_test {

Words Lines(const std::string& text) {
  std::istringstream stream(text);
  Words lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

ChildResult ProgramTest::Corvane(const Words& arguments,
                                 const ChildSetup& setup) {
  return StartCorvane(arguments, setup)->Wait();
}

ChildResult ProgramTest::CorvaneFed(const Bytes& input,
                                    const Words& arguments) {
  ChildSetup setup;
  setup.input_is_pipe = true;
  const auto child = StartCorvane(arguments, setup);
  child->Write(input);
  child->CloseInput();
  return child->Wait();
}

ChildResult ProgramTest::CorvaneInShell(const std::string& prepare,
                                        const std::string& redirect,
                                        const Words& arguments) {
  Words argv = {"/bin/sh", "-c", prepare + "\nexec \"$@\" " + redirect, "sh",
                CORVANE_PROGRAM};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return Child(argv, {}).Wait();
}

ChildResult ProgramTest::CorvaneUnprivileged(const Words& arguments) {
  return CorvaneInShell(
      "[ $(id -u) != 0 ] || set -- setpriv "
      "--bounding-set=-dac_override,-dac_read_search \"$@\"",
      "", arguments);
}

std::unique_ptr<Child> ProgramTest::StartCorvane(const Words& arguments,
                                                 const ChildSetup& setup) {
  Words argv = {CORVANE_PROGRAM};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return std::make_unique<Child>(argv, setup);
}

void ProgramTest::ShouldFail(const ChildResult& run,
                             const std::string& sentence) {
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("corvane: " + sentence + "\n"), std::string::npos)
      << "expected: " << sentence << "\nactual:\n"
      << run.err;
}

std::string ProgramTest::DecoderComplaints(const std::string& path) {
  const Words argv = {"/bin/sh", "-c",
                      "exec ffmpeg -nostdin -v error -i \"$1\" -f null - ",
                      "sh", path};
  const ChildResult run = Child(argv, {}).Wait();
  return run.err + (run.status == 0 ? "" : "[failed]");
}

std::string ProgramTest::MakeWav(const std::string& name, const Bytes& pcm,
                                 int rate, int channels) {
  WriteWav(Path(name), pcm, rate, channels);
  return Path(name);
}

}  // namespace corvane_test
