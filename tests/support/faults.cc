#include "support/faults.h"

#include <gtest/gtest.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "support/faults_intercept.h"

namespace corvane_test {

struct Fault::State {
  explicit State(const Rule& rule) : rule(rule) {}

  const Rule rule;
  int seen = 0;
  int struck = 0;
};

struct CallLog::State {
  std::vector<PluginCall> calls;
};

namespace {

// Everything that the layer knows, behind one mutex, which is never held while
// a hook or a real call runs.
struct Book {
  std::mutex mutex;
  std::vector<std::shared_ptr<Fault::State>> faults;
  std::vector<std::shared_ptr<CallLog::State>> logs;
  std::map<int, std::string> descriptors;
  Held objects;  // all but the descriptors
};

// Never destroyed: calls come until the very end of the process.
Book& book() {
  static Book& only = *new Book;
  return only;
}

std::atomic<int> program_watches = 0;
thread_local int inside_depth = 0;

// The addresses that an object of the process is mapped to.
struct Range {
  uintptr_t begin = UINTPTR_MAX;
  uintptr_t end = 0;

  bool Holds(const void* address) const {
    const auto number = reinterpret_cast<uintptr_t>(address);
    return begin <= number && number < end;
  }
};

struct Search {
  const char* name;  // the file's name; empty for the program itself
  Range range;
};

int Visit(dl_phdr_info* info, size_t, void* data) {
  auto* search = static_cast<Search*>(data);
  const char* slash = strrchr(info->dlpi_name, '/');
  const char* name = slash == nullptr ? info->dlpi_name : slash + 1;
  if (strcmp(name, search->name) != 0) {
    return 0;
  }
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type == PT_LOAD) {
      const uintptr_t begin = info->dlpi_addr + header.p_vaddr;
      search->range.begin = std::min(search->range.begin, begin);
      search->range.end =
          std::max<uintptr_t>(search->range.end, begin + header.p_memsz);
    }
  }
  return 1;
}

Range RangeOf(const char* object_name) {
  Search search{object_name, {}};
  dl_iterate_phdr(Visit, &search);
  return search.range;
}

bool Matches(const Rule& rule, const PluginCall& call) {
  return (rule.name == call.name || (rule.name == "*" && call.can_fail)) &&
         (rule.path.empty() || rule.path == call.path) &&
         (rule.fd < 0 || rule.fd == call.fd);
}

void Apply(const Rule& rule, PluginCall* call, Plan* plan) {
  if (rule.before) {
    plan->before.push_back(rule.before);
  }
  if (rule.after) {
    plan->after.push_back(rule.after);
  }
  if (rule.accept >= 0) {
    call->size = std::min(call->size, rule.accept);
  }
  if (rule.outcome != Rule::Outcome::kReal) {
    plan->outcome = rule.outcome;
    plan->value = rule.value;
  }
}

int* CountOf(Kind kind, Held* held) {
  switch (kind) {
    case Kind::kContext:
      return &held->contexts;
    case Kind::kFrame:
      return &held->frames;
    default:
      return &held->packets;
  }
}

template <typename T>
void Remove(std::vector<std::shared_ptr<T>>* all,
            const std::shared_ptr<T>& one) {
  all->erase(std::remove(all->begin(), all->end(), one), all->end());
}

}  // namespace

bool Watched(const void* caller) {
  static const Range plugin = RangeOf("libcorvane_plugin.so");
  static const Range program = RangeOf("");
  return inside_depth == 0 && (plugin.Holds(caller) ||
                               (program_watches > 0 && program.Holds(caller)));
}

Inside::Inside() { ++inside_depth; }
Inside::~Inside() { --inside_depth; }

Plan Begin(PluginCall* call) {
  Plan plan;
  Book& all = book();
  const std::lock_guard<std::mutex> lock(all.mutex);
  call->thread = gettid();
  const auto opened = all.descriptors.find(call->fd);
  if (call->path.empty() && opened != all.descriptors.end()) {
    call->path = opened->second;
  }
  for (const auto& fault : all.faults) {
    const Rule& rule = fault->rule;
    if (!Matches(rule, *call)) {
      continue;
    }
    const int behind = ++fault->seen - rule.first;
    if (behind >= 0 && (rule.times < 0 || behind < rule.times)) {
      ++fault->struck;
      Apply(rule, call, &plan);
    }
  }
  return plan;
}

void End(const PluginCall& call) {
  Book& all = book();
  const std::lock_guard<std::mutex> lock(all.mutex);
  for (const auto& log : all.logs) {
    log->calls.push_back(call);
  }
}

void Opened(int fd, const std::string& path) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  book().descriptors[fd] = path;
}

void Closed(int fd) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  book().descriptors.erase(fd);
}

void Allocated(Kind kind, const void* object) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  *CountOf(kind, &book().objects) += object != nullptr ? 1 : 0;
}

void Freed(Kind kind, const void* object) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  *CountOf(kind, &book().objects) -= object != nullptr ? 1 : 0;
}

Fault::Fault(const Rule& rule) : state_(std::make_shared<State>(rule)) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  book().faults.push_back(state_);
}

Fault::~Fault() {
  {
    const std::lock_guard<std::mutex> lock(book().mutex);
    Remove(&book().faults, state_);
  }
  if (state_->struck == 0 && !state_->rule.may_miss) {
    ADD_FAILURE() << "the fault on " << state_->rule.name
                  << " never struck: " << state_->seen << " matching calls";
  }
}

int Fault::seen() const {
  const std::lock_guard<std::mutex> lock(book().mutex);
  return state_->seen;
}

int Fault::struck() const {
  const std::lock_guard<std::mutex> lock(book().mutex);
  return state_->struck;
}

CallLog::CallLog() : state_(std::make_shared<State>()) {
  const std::lock_guard<std::mutex> lock(book().mutex);
  book().logs.push_back(state_);
}

CallLog::~CallLog() {
  const std::lock_guard<std::mutex> lock(book().mutex);
  Remove(&book().logs, state_);
}

std::vector<PluginCall> CallLog::calls() const {
  const std::lock_guard<std::mutex> lock(book().mutex);
  return state_->calls;
}

WatchProgram::WatchProgram() { ++program_watches; }
WatchProgram::~WatchProgram() { --program_watches; }

Held HeldNow() {
  const std::lock_guard<std::mutex> lock(book().mutex);
  Held held = book().objects;
  held.descriptors = static_cast<int>(book().descriptors.size());
  return held;
}

}  // namespace corvane_test
