#include "crash/walk_process.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "crash/walker.h"

namespace corvane_test {
namespace {

// Longer than any step takes: past it the plugin hangs.
constexpr timeval kHang = {60, 0};

void Check(bool worked, const char* what) {
  if (worked) return;
  perror(what);
  std::abort();
}

}  // namespace

WalkProcess::WalkProcess(const Walk& walk) {
  std::array<int, 2> ends = {};
  Check(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0,
        "socketpair");
  pid_ = fork();
  Check(pid_ >= 0, "fork");
  if (pid_ == 0) {
    close(ends[0]);
    Walker(walk, ends[1]).Run();
  }
  close(ends[1]);
  socket_ = ends[0];
  Check(
      setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &kHang, sizeof(kHang)) == 0,
      "SO_RCVTIMEO");
}

WalkProcess::~WalkProcess() {
  close(socket_);
  if (pid_ < 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
}

Report WalkProcess::Do(size_t i) {
  Report report;
  std::string packet(kMaxPacket, '\0');
  send(socket_, &i, sizeof(i), MSG_NOSIGNAL);  // an end shows below
  for (;;) {
    const ssize_t size = recv(socket_, packet.data(), packet.size(), 0);
    if (size < 0 && errno == EAGAIN) report.failure = "hangs";
    if (size <= 0) break;
    const char* const data = packet.data() + 1;
    if (packet[0] == kDonePacket) return report;
    if (packet[0] == kLinePacket) {
      report.lines.emplace_back(data, size - 1);
    } else {
      report.written.insert(report.written.end(), data, data + size - 1);
    }
  }
  if (report.failure.empty()) End(&report);
  return report;
}

void WalkProcess::End(Report* report) {
  int status = 0;
  Check(waitpid(pid_, &status, 0) == pid_, "waitpid");
  pid_ = -1;
  report->is_killed = WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
  if (report->is_killed) return;
  report->failure = WIFSIGNALED(status)
                        ? std::string("died: ") + strsignal(WTERMSIG(status))
                        : "exited with " + std::to_string(WEXITSTATUS(status));
}

}  // namespace corvane_test
