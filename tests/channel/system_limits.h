// A limit of the process, for the length of a scope: the honest way to a write
// that fails.
#ifndef CORVANE_TESTS_CHANNEL_SYSTEM_LIMITS_H_
#define CORVANE_TESTS_CHANNEL_SYSTEM_LIMITS_H_

#include <signal.h>
#include <sys/resource.h>

namespace corvane_test {

// No file can grow past `bytes`; writes end short there and then fail with
// EFBIG instead of a deadly signal.
class FilesEndAt {
 public:
  explicit FilesEndAt(rlim_t bytes) : handler_(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &limit_);
    rlimit lowered = limit_;
    lowered.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &lowered);
  }
  ~FilesEndAt() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    signal(SIGXFSZ, handler_);
  }
  FilesEndAt(const FilesEndAt&) = delete;
  FilesEndAt& operator=(const FilesEndAt&) = delete;

 private:
  void (*handler_)(int);
  rlimit limit_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CHANNEL_SYSTEM_LIMITS_H_
