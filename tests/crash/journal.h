// What a recorder knows at the moment of its death: memory that it shares with
// the test and that outlives it.
#ifndef CORVANE_TESTS_CRASH_JOURNAL_H_
#define CORVANE_TESTS_CRASH_JOURNAL_H_

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace corvane_test {

// Lies in a mapped file. A count is stored after what it counts has happened,
// so it never says too much.
struct Journal {
  static constexpr size_t kCapacity = 4 << 20;

  // Bytes that writes have returned as written, and those bytes.
  std::atomic<uint64_t> size;
  // A write has begun and not returned.
  std::atomic<bool> writing;
  // The segment that is being recorded: its first byte, counted in `data`,
  // and the sample frames whose appends were answered since.
  std::atomic<bool> in_segment;
  std::atomic<uint64_t> segment_at;
  std::atomic<uint64_t> fed;
  uint8_t data[kCapacity];
};

// The journal in this file, mapped as long as this lives. A new file is an
// empty journal.
class JournalFile {
 public:
  explicit JournalFile(const std::string& path) {
    const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd < 0 || ftruncate(fd, sizeof(Journal)) != 0) abort();
    void* memory = mmap(nullptr, sizeof(Journal), PROT_READ | PROT_WRITE,
                        MAP_SHARED, fd, 0);
    close(fd);
    if (memory == MAP_FAILED) abort();
    journal_ = static_cast<Journal*>(memory);
  }
  ~JournalFile() { munmap(journal_, sizeof(Journal)); }
  JournalFile(const JournalFile&) = delete;
  JournalFile& operator=(const JournalFile&) = delete;

  Journal* operator->() { return journal_; }

 private:
  Journal* journal_;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_CRASH_JOURNAL_H_
