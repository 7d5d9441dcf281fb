// The inside of the fault layer: what the overriding functions share.
#ifndef CORVANE_TESTS_SUPPORT_FAULTS_INTERCEPT_H_
#define CORVANE_TESTS_SUPPORT_FAULTS_INTERCEPT_H_

#include <dlfcn.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "support/faults.h"

namespace corvane_test {

// The function that would have been called without the override.
template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Whether a call that returns to `caller` is to be watched.
bool Watched(const void* caller);

// The records of a call on a path, and on a descriptor.
PluginCall OnPath(const char* name, const char* path);
PluginCall OnDescriptor(const char* name, int fd, int64_t size = 0);

// Keeps the book of what the plugin holds.
enum class Kind { kContext, kFrame, kPacket };
void Opened(int fd, const std::string& path);
void Closed(int fd);
void Allocated(Kind kind, const void* object);
void Freed(Kind kind, const void* object);

// Marks the thread as being inside the fault layer: its calls pass through.
class Inside {
 public:
  Inside();
  ~Inside();
};

// What the rules in force make of one call.
struct Plan {
  Rule::Outcome outcome = Rule::Outcome::kReal;
  int64_t value = 0;
  std::vector<Hook> before;
  std::vector<Hook> after;
};

Plan Begin(PluginCall* call);
void End(const PluginCall& call);

// The errno-style or libav-style number that `call` returns on failure.
int64_t FailureOf(const PluginCall& call, int64_t error);

template <typename Result>
Result FromNumber(int64_t number) {
  if constexpr (std::is_pointer_v<Result>) {
    return nullptr;
  } else {
    return static_cast<Result>(number);
  }
}

template <typename Result>
int64_t ToNumber(Result result) {
  if constexpr (std::is_pointer_v<Result>) {
    return result != nullptr ? 1 : 0;
  } else {
    return static_cast<int64_t>(result);
  }
}

// Carries out a watched call: `real` makes it from the values in `call`, which
// rules may have changed. Leaves errno as the real or the feigned call has it.
template <typename Result, typename Real>
Result Intercept(PluginCall* call, Real real) {
  const Inside inside;
  int error = errno;
  const Plan plan = Begin(call);
  for (const Hook& hook : plan.before) {
    hook(*call);
  }
  const bool made = plan.outcome == Rule::Outcome::kReal;
  Result result = {};
  if (made || call->releases) {
    errno = error;
    result = real(*call);
    error = errno;
  }
  if (plan.outcome == Rule::Outcome::kFail) {
    result = FromNumber<Result>(FailureOf(*call, plan.value));
    error = call->averror ? error : static_cast<int>(plan.value);
  } else if (!made) {
    result = FromNumber<Result>(plan.value);
  }
  call->result = ToNumber(result);
  call->error = error;
  for (const Hook& hook : plan.after) {
    hook(*call);
  }
  End(*call);
  errno = error;
  return result;
}

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_FAULTS_INTERCEPT_H_
