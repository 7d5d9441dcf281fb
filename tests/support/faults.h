// Faults on demand: the plugin's system and codec calls watched, delayed and
// made to fail. A program that links `corvane_faults` overrides the functions
// for the whole process; only calls that come out of the plugin's library are
// touched, everybody else's pass through uncounted. The return address tells
// them apart, so an optimiser's tail call out of a function that another
// library called would go unseen; the plugin has none.
//
//   Fault disk_full(On("write").From(3).Fail(ENOSPC));
//   Fault storm(On("write").Times(5).Fail(EINTR));
//   Fault torn(On("write").Nth(1).Path(take).Accept(10));
//   Fault gate(On("fsync").Before([&](PluginCall&) { opened.wait(); }));
//
// Functions go by their plain names, whatever alias was called: open, write,
// pread, fsync, ftruncate, fstat, stat, rename, close, getcwd, fopen, fwrite,
// fflush, fclose; avcodec_find_encoder_by_name, avcodec_alloc_context3,
// av_frame_alloc, av_packet_alloc, avcodec_open2, av_channel_layout_copy,
// av_frame_get_buffer, av_frame_make_writable, avcodec_send_frame,
// avcodec_receive_packet; and, watched but never failing, avcodec_free_context,
// av_frame_free, av_packet_free.
#ifndef CORVANE_TESTS_SUPPORT_FAULTS_H_
#define CORVANE_TESTS_SUPPORT_FAULTS_H_

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

struct stat;
struct AVCodec;
struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace corvane_test {

// One call of the plugin.
struct PluginCall {
  const char* name = "";
  pid_t thread = 0;
  std::string path;      // as given, or as its descriptor was opened
  std::string new_path;  // of a rename
  int fd = -1;
  int64_t size = 0;    // bytes asked for; ftruncate's length; nb_samples of a
                       // frame that is sent, 0 for the flush
  int64_t wanted = 0;  // the size as the plugin gave it, before any Accept()
  int64_t offset = 0;  // of a pread
  int flags = 0;       // of an open,
  mode_t mode = 0;     // with the mode where it may create
  int64_t result = 0;  // what the plugin got; a pointer counts as 1, null as 0
  int error = 0;       // errno as the plugin found it behind the call

  // What the call works on, where it has one; valid inside hooks only.
  const void* data = nullptr;  // the bytes of a write
  struct stat* status = nullptr;
  const AVCodec* codec = nullptr;
  AVCodecContext* context = nullptr;
  const AVFrame* frame = nullptr;
  AVPacket* packet = nullptr;

  // How the call looks when it fails; the overrides set these.
  int64_t failed = -1;    // the returned number, unless `averror`
  bool averror = false;   // returns a negative libav error
  bool releases = false;  // takes effect even when it fails, like close()
  bool can_fail = true;
};

using Hook = std::function<void(PluginCall& call)>;

// Which calls are struck, and what happens to them: a value that is built up.
// Unless told otherwise a rule strikes from the first matching call for good.
struct Rule {
  explicit Rule(std::string function) : name(std::move(function)) {}

  // Which of the matching calls, counted from 1.
  Rule& Nth(int n) { return From(n).Times(1); }
  Rule& From(int n);
  Rule& Times(int count);
  // Only calls on this path or descriptor match.
  Rule& Path(std::string only);
  Rule& Descriptor(int only);
  // The call isn't made (but a close is, and still reports the failure). A
  // system call fails with `error` as errno, which may be 0; a libav call with
  // AVERROR(error), or with `error` itself where that is negative, or with
  // AVERROR_UNKNOWN for 0, which is no failure; one that returns a pointer with
  // null.
  Rule& Fail(int error);
  // The call isn't made and returns `value`, with errno left alone.
  Rule& Return(int64_t value);
  // The call is made for no more than `bytes` bytes.
  Rule& Accept(int64_t bytes);
  // Run around the call, on its thread and without any lock. A hook's own calls
  // aren't watched.
  Rule& Before(Hook hook);
  Rule& After(Hook hook);
  // Not striking at all is no failure of the test.
  Rule& MayMiss();

  enum class Outcome { kReal, kFail, kReturn };

  std::string name;  // "*": every function that can fail
  int first = 1;
  int times = -1;  // without end
  std::string path;
  int fd = -1;
  Outcome outcome = Outcome::kReal;
  int64_t value = 0;    // errno of a failure, or the value returned
  int64_t accept = -1;  // without limit
  Hook before;
  Hook after;
  bool may_miss = false;
};

inline Rule On(std::string function) { return Rule(std::move(function)); }
inline Rule OnEverything() { return Rule("*"); }

// A rule in force as long as it lives. Where several rules in force match, all
// their hooks run, and the newest that decides the outcome does. A fault that
// has struck nothing when it goes fails the test: it proved nothing.
class Fault {
 public:
  explicit Fault(const Rule& rule);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  int seen() const;    // matching calls so far
  int struck() const;  // those of them that were struck

  struct State;  // shared with calls under way

 private:
  std::shared_ptr<State> state_;
};

// Records every watched call as long as it lives, in the order in which the
// calls returned.
class CallLog {
 public:
  CallLog();
  ~CallLog();
  CallLog(const CallLog&) = delete;
  CallLog& operator=(const CallLog&) = delete;

  std::vector<PluginCall> calls() const;
  std::vector<PluginCall> Of(const std::string& name) const;
  std::vector<std::string> Names() const;

  struct State;

 private:
  std::shared_ptr<State> state_;
};

// As long as it lives, calls of the test program itself are watched like the
// plugin's: for tests that compile a part of the plugin in.
class WatchProgram {
 public:
  WatchProgram();
  ~WatchProgram();
  WatchProgram(const WatchProgram&) = delete;
  WatchProgram& operator=(const WatchProgram&) = delete;
};

// What the plugin holds at this moment.
struct Held {
  int descriptors = 0;  // streams included
  int contexts = 0;
  int frames = 0;
  int packets = 0;
};

Held HeldNow();
bool operator==(const Held& a, const Held& b);
std::ostream& operator<<(std::ostream& out, const Held& held);
std::ostream& operator<<(std::ostream& out, const PluginCall& call);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_SUPPORT_FAULTS_H_
