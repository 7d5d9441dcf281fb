// Runs a command and writes what it took, it and whom it waited for: CPU (user
// and system) and wall time in microseconds, peak resident memory in KiB, its
// exit status as a shell tells it, and how often it gave up the processor to
// wait, which is how often it had to be woken. The kernel counts to a new
// program's peak what its process held before, so whoever starts what is
// measured must be small: this.
//
//   run_measured REPORT COMMAND...
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <ctime>

namespace {

constexpr int kNotStarted = 127;  // as shells have it

int64_t microseconds(const timeval& time) {
  return time.tv_sec * int64_t{1000000} + time.tv_usec;
}

int64_t now_us() {
  timespec time = {};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * int64_t{1000000} + time.tv_nsec / 1000;
}

// Nothing that is measured goes on without who measures it.
void end_with_parent() { prctl(PR_SET_PDEATHSIG, SIGKILL); }

[[noreturn]] void become(char** command) {
  end_with_parent();
  execvp(command[0], command);
  std::perror(command[0]);
  _exit(kNotStarted);
}

int exit_status(int status) {
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool write_report(const char* path, int64_t wall_us, const rusage& usage,
                  int status) {
  FILE* const file = std::fopen(path, "we");
  if (file == nullptr) return false;
  const int64_t cpu_us =
      microseconds(usage.ru_utime) + microseconds(usage.ru_stime);
  std::fprintf(file, "%lld %lld %ld %d %ld\n", static_cast<long long>(cpu_us),
               static_cast<long long>(wall_us), usage.ru_maxrss,
               exit_status(status), usage.ru_nvcsw);
  return std::fclose(file) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  end_with_parent();
  const int64_t started_us = now_us();
  const pid_t child = fork();
  if (child == 0) become(argv + 2);
  int status = 0;
  rusage usage = {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return 1;
  return write_report(argv[1], now_us() - started_us, usage, status) ? 0 : 1;
}
