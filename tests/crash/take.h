// A take as a list of steps that two processes carry out alike.
#ifndef CORVANE_TESTS_CRASH_TAKE_H_
#define CORVANE_TESTS_CRASH_TAKE_H_

#include <functional>
#include <string>
#include <vector>

#include "support/reply.h"
#include "support/value.h"

namespace corvane_test {

// A step is a method's name, or "append=N" for the next N sample frames.
using Steps = std::vector<std::string>;

struct Take {
  std::string path;
  int rate = 48000;
  int channels = 1;
  Steps steps;
};

// Makes a call and waits for its reply.
using Caller = std::function<Reply(const char* method, const Value& args)>;

class TakeRunner {
 public:
  TakeRunner(const Take& take, Caller call);

  // Carries out one step; an append's PCM goes on where the last one ended.
  Reply Run(const std::string& step);
  void RunAll();

 private:
  const Take take_;
  const Caller call_;
  const Bytes pcm_;
  size_t at_ = 0;
};

// The N of "append=N", else 0.
int AppendedBy(const std::string& step);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_TAKE_H_
