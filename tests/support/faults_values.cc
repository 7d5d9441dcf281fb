// The fault layer's values: rules as they are built up, and what records say.
#include <cstring>
#include <utility>

#include "support/faults.h"
#include "support/faults_intercept.h"

extern "C" {
#include <libavutil/error.h>
}

namespace corvane_test {

Rule& Rule::From(int n) {
  first = n;
  return *this;
}

Rule& Rule::Times(int count) {
  times = count;
  return *this;
}

Rule& Rule::Path(std::string only) {
  path = std::move(only);
  return *this;
}

Rule& Rule::Descriptor(int only) {
  fd = only;
  return *this;
}

Rule& Rule::Fail(int error) {
  outcome = Outcome::kFail;
  value = error;
  return *this;
}

Rule& Rule::Return(int64_t returned) {
  outcome = Outcome::kReturn;
  value = returned;
  return *this;
}

Rule& Rule::Accept(int64_t bytes) {
  accept = bytes;
  return *this;
}

Rule& Rule::Before(Hook hook) {
  before = std::move(hook);
  return *this;
}

Rule& Rule::After(Hook hook) {
  after = std::move(hook);
  return *this;
}

Rule& Rule::MayMiss() {
  may_miss = true;
  return *this;
}

PluginCall OnPath(const char* name, const char* path) {
  PluginCall call;
  call.name = name;
  call.path = path;
  return call;
}

PluginCall OnDescriptor(const char* name, int fd, int64_t size) {
  PluginCall call;
  call.name = name;
  call.fd = fd;
  call.size = size;
  call.wanted = size;
  return call;
}

int64_t FailureOf(const PluginCall& call, int64_t error) {
  if (!call.averror) {
    return call.failed;
  }
  if (error == 0) {
    return AVERROR_UNKNOWN;
  }
  return error < 0 ? error : AVERROR(error);
}

std::vector<PluginCall> CallLog::Of(const std::string& name) const {
  std::vector<PluginCall> named;
  for (const PluginCall& call : calls()) {
    if (call.name == name) {
      named.push_back(call);
    }
  }
  return named;
}

std::vector<std::string> CallLog::Names() const {
  std::vector<std::string> names;
  for (const PluginCall& call : calls()) {
    names.emplace_back(call.name);
  }
  return names;
}

bool operator==(const Held& a, const Held& b) {
  return a.descriptors == b.descriptors && a.contexts == b.contexts &&
         a.frames == b.frames && a.packets == b.packets;
}

std::ostream& operator<<(std::ostream& out, const Held& held) {
  return out << held.descriptors << " descriptors, " << held.contexts
             << " contexts, " << held.frames << " frames, " << held.packets
             << " packets";
}

std::ostream& operator<<(std::ostream& out, const PluginCall& call) {
  out << call.name << "(" << call.path << ", fd " << call.fd << ", size "
      << call.size << ") = " << call.result;
  return call.error == 0 ? out : out << " (" << strerror(call.error) << ")";
}

}  // namespace corvane_test
