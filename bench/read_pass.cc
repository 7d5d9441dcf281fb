// The least that a program can do to know what is in a file: read all of it,
// 64 KiB at a time, and look at nothing. What `corvane finalize` may cost on a
// long capture is measured against this.
//
//   read_pass FILE
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const int fd = open(argv[1], O_RDONLY | O_CLOEXEC);
  std::vector<uint8_t> window(65536);
  off_t at = 0;
  ssize_t got = 1;
  for (; got > 0; at += got) {
    got = pread(fd, window.data(), window.size(), at);
  }
  std::printf("%lld bytes\n", static_cast<long long>(at - got));
  return got == 0 && close(fd) == 0 ? 0 : 1;
}
