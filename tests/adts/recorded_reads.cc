#include "recorded_reads.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace corvane_test {
namespace {

RecordedReads* g_active = nullptr;

}  // namespace

RecordedReads::RecordedReads(Pread pread, AfterFstat after_fstat)
    : pread_(std::move(pread)), after_fstat_(std::move(after_fstat)) {
  g_active = this;
}

RecordedReads::~RecordedReads() { g_active = nullptr; }

// Straight to the kernel: the C library's pread is hidden behind ours.
ssize_t RecordedReads::Real(int fd, void* buffer, size_t count, off_t offset) {
  return syscall(SYS_pread64, fd, buffer, count, offset);
}

ssize_t RecordedReads::OnPread(int fd, void* buffer, size_t count,
                               off_t offset) {
  const ssize_t result = pread_(fd, buffer, count, offset);
  const int error = errno;
  reads_.push_back({offset, count, result});
  errno = error;
  return result;
}

int RecordedReads::OnFstat(struct stat* status) {
  return after_fstat_ ? after_fstat_(status) : 0;
}

}  // namespace corvane_test

extern "C" ssize_t pread(int fd, void* buffer, size_t count, off_t offset) {
  using corvane_test::g_active;
  using corvane_test::RecordedReads;
  return g_active != nullptr ? g_active->OnPread(fd, buffer, count, offset)
                             : RecordedReads::Real(fd, buffer, count, offset);
}

extern "C" int fstat(int fd, struct stat* status) noexcept {
  using corvane_test::g_active;
  const int result = fstatat(fd, "", status, AT_EMPTY_PATH);
  return result == 0 && g_active != nullptr ? g_active->OnFstat(status)
                                            : result;
}
