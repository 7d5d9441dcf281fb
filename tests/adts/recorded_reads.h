// pread and fstat as this program calls them: recorded, and made to behave as
// a test wants. The program defines both names itself, so the scanner linked
// into it meets these in place of the C library's.
#ifndef CORVANE_TESTS_ADTS_RECORDED_READS_H_
#define CORVANE_TESTS_ADTS_RECORDED_READS_H_

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace corvane_test {

struct Read {
  off_t offset;
  size_t count;    // bytes asked for
  ssize_t result;  // bytes delivered, or -1
};

// Records and steers from construction to destruction; one at a time.
class RecordedReads {
 public:
  // Stands in for pread; `Real` is what it replaces.
  using Pread =
      std::function<ssize_t(int fd, void* buffer, size_t count, off_t offset)>;
  // Runs after a successful fstat and may change what it found; its result and
  // errno become fstat's.
  using AfterFstat = std::function<int(struct stat*)>;

  explicit RecordedReads(Pread pread = Real, AfterFstat after_fstat = nullptr);
  ~RecordedReads();
  RecordedReads(const RecordedReads&) = delete;
  RecordedReads& operator=(const RecordedReads&) = delete;

  const std::vector<Read>& reads() const { return reads_; }

  static ssize_t Real(int fd, void* buffer, size_t count, off_t offset);

  // For the two overriding functions alone.
  ssize_t OnPread(int fd, void* buffer, size_t count, off_t offset);
  int OnFstat(struct stat* status);

 private:
  Pread pread_;
  AfterFstat after_fstat_;
  std::vector<Read> reads_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_ADTS_RECORDED_READS_H_
