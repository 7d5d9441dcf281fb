// A second lexical normalisation of paths: it repeats the simplest rewriting
// until nothing changes, slow and obvious. Tests and fuzzers hold the plugin's
// against it.
#ifndef CORVANE_TESTS_SUPPORT_NAIVE_PATH_H_
#define CORVANE_TESTS_SUPPORT_NAIVE_PATH_H_

#include <string>

namespace corvane_test {

// The absolute form of `path`, which starts from `cwd` where it is relative.
std::string NaiveNormalize(const std::string& path, const std::string& cwd);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_NAIVE_PATH_H_
