// The program's exit statuses.
#ifndef CORVANE_HOST_TERMINAL_EXIT_STATUS_H_
#define CORVANE_HOST_TERMINAL_EXIT_STATUS_H_

namespace corvane {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_EXIT_STATUS_H_
