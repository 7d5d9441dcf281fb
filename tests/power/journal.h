// The record that a disk keeps of what it was told.
#ifndef CORVANE_TESTS_POWER_JOURNAL_H_
#define CORVANE_TESTS_POWER_JOURNAL_H_

#include <cstddef>
#include <cstdint>

namespace corvane_test {

// The monotonic clock.
uint64_t now_ns();

// Writes go to an image, and with their times to a journal beside it: for each
// a header of little-endian numbers, behind it the bytes of a write.
class Journal {
 public:
  struct Header {
    uint64_t begin_ns;  // it arrived
    uint64_t end_ns;    // it is about to be answered
    uint64_t offset;    // of a write, in bytes
    uint32_t size;      // of a write, in bytes
    uint32_t kind;      // of Kind
  };
  enum Kind : uint32_t { kWrite = 1, kFlush = 2 };

  // Opens the image, which has to exist, and makes the journal. Ends the
  // process when that fails: there is nobody to be told yet.
  Journal(const char* image, const char* journal);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  // Bytes of the image.
  int64_t size() const { return size_; }
  // These return 0 or an errno value. A write is whole or has failed.
  int Read(char* out, size_t size, int64_t offset) const;
  int Write(const char* data, size_t size, int64_t offset);
  int Flush();

 private:
  int Keep(Header header, const char* data);

  const int image_;
  const int journal_;
  int64_t size_ = 0;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_POWER_JOURNAL_H_
