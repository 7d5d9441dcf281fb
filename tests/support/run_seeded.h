// The main function of test programs that leave something to chance.
#ifndef CORVANE_TESTS_SUPPORT_RUN_SEEDED_H_
#define CORVANE_TESTS_SUPPORT_RUN_SEEDED_H_

namespace corvane_test {

// Runs GoogleTest's tests, with temporary files in memory and the codec quiet,
// and says first which seed repeats the run. Returns the exit status.
int RunSeeded(int argc, char** argv);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_RUN_SEEDED_H_
