// The whole plugin fed by a byte string that is read as a sequence of channel
// messages, sound and broken, with changes to the files in between.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>

#include "adts/stream_config.h"
#include "fuzzing.h"
#include "plugin_driver.h"
#include "plugin_judge.h"
#include "plugin_messages.h"
#include "support/files.h"
#include "support/naive_scan.h"

extern "C" {
#include <libavutil/log.h>
}

namespace corvane_fuzz {
namespace {
namespace fs = std::filesystem;

using corvane_test::Do;
using corvane_test::kWalkPaths;
using corvane_test::MethodOf;
using corvane_test::Reply;

constexpr int kMostActions = 24;
constexpr unsigned kMostPcm = 12000;  // bytes; some frames of every format

// Others are left to broken arguments: the model doesn't know their layouts.
constexpr std::array<uint32_t, 3> kChannels = {1, 2, 6};

// The actions, in the order of the bytes that stand for them.
enum Action : uint8_t {
  kCall,       // method, path, format; append: 2 bytes of length, 1 of content
  kBrokenArg,  // the same and which argument, then length and bytes of its
               // value
  kRaw,        // length, then the bytes of a message
  kRawToLog,   // likewise, to the log's channel
  kRestart,
  kTear,     // path, how many bytes go from the end
  kLitter,   // path, length, bytes that go to the end
  kNewFile,  // path, length, content
  kFolder,   // path
  kRemove,   // path
  kActions
};

Bytes PcmValue(Input* input) {
  const unsigned size = input->Word() % kMostPcm;
  const unsigned step = input->Byte();
  Bytes bytes = {8, 254, static_cast<uint8_t>(size),
                 static_cast<uint8_t>(size >> 8)};
  for (unsigned i = 0; i < size; ++i) {
    bytes.push_back(static_cast<uint8_t>(step * i));
  }
  return bytes;
}

std::string PathFrom(Input* input) {
  return kWalkPaths[input->Byte() % kWalkPaths.size()];
}

// The last is left out of a sound call.
Arguments ArgumentsFrom(Input* input) {
  const std::string path = PathFrom(input);
  const unsigned format = input->Byte();
  const auto& rates = adts::kSamplingFrequencies;
  return {TextValue(path),
          TextValue(path),
          TextValue(path),
          IntValue(rates[format % rates.size()]),
          IntValue(kChannels[format / rates.size() % kChannels.size()]),
          {}};
}

Bytes CallFrom(Input* input, bool broken) {
  const auto what =
      static_cast<Do>(input->Byte() % (static_cast<int>(Do::kUnknown) + 1));
  if (what == Do::kAppend && !broken) {
    Bytes message = TextValue(MethodOf({what}));
    Append(&message, PcmValue(input));
    return message;
  }
  Arguments arguments = ArgumentsFrom(input);
  if (broken) {
    Bytes& argument = arguments[input->Byte() % kKeys.size()];
    argument = input->Take(input->Byte());
  }
  return MethodCall(MethodOf({what}), arguments);
}

// What a seal leaves of a file.
Bytes StreamOf(const Bytes& file) {
  return Bytes(file.begin(),
               file.begin() + corvane_test::NaiveScan(file).stream_end);
}

class Run {
 public:
  explicit Run(const std::string& folder) : inside_(folder), judge_(folder) {}

  void Act(Input* input) {
    const uint8_t action = input->Byte() % kActions;
    switch (action) {
      case kCall:
      case kBrokenArg:
        return Send(Message(CallFrom(input, action == kBrokenArg)));
      case kRaw:
        return Send(Message(input->Take(input->Byte())));
      case kRawToLog:
        return driver_.SendToLog(Message(input->Take(input->Byte())));
      case kRestart:
        return judge_.AfterRestart(driver_.Restart());
      default:
        ChangeFiles(action, PathFrom(input), input);
        return judge_.AfterChange();
    }
  }

  // Ends the take and seals every file, twice: the answers are what a scan
  // says, and the second seal finds nothing to do.
  void End() {
    Send(Message(MethodCall("cancel")));
    const auto files = judge_.world().files;
    for (const auto& [path, content] : files) {
      const std::string name =
          fs::path(path).lexically_relative(fs::current_path());
      Seal(name);
      const Bytes sealed = corvane_test::ReadFile(name);
      Seal(name);
      Require(corvane_test::ReadFile(name) == sealed,
              "a second seal changed " + name);
    }
  }

 private:
  void Send(const Message& message) {
    if (!message.decodes()) return driver_.SendBroken(message);
    if (!IsConfined(message)) return;
    const std::string& method = message.method();
    const auto refusal = RefusalOf(message);
    const Outcome outcome = driver_.Call(message, method);
    if (refusal) return judge_.AfterRefusal(method, *refusal, outcome);
    const auto step = StepOf(message);
    if (step) return judge_.AfterStep(*step, outcome);
    judge_.AfterOther(method, outcome);
  }

  void Seal(const std::string& name) {
    const Bytes before = corvane_test::ReadFile(name);
    const Message message(MethodCall("finalizePath", {TextValue(name),
                                                      TextValue(name),
                                                      {},
                                                      IntValue(8000),
                                                      IntValue(1),
                                                      {}}));
    const Reply reply = driver_.Call(message, message.method()).reply;
    const Reply due = SealedReply(name, before);
    Require(reply == due, ToString(due) + " is due, came " + ToString(reply));
    Require(corvane_test::ReadFile(name) == StreamOf(before),
            "not what a scan reaches of " + name);
  }

  void ChangeFiles(uint8_t action, const std::string& path, Input* input) {
    const bool is_file = fs::is_regular_file(path);
    const bool fits =
        !fs::exists(path) && fs::is_directory(fs::absolute(path).parent_path());
    if (action == kTear && is_file) {
      const auto size = static_cast<size_t>(corvane_test::FileSize(path));
      corvane_test::TruncateFile(path,
                                 size - std::min<size_t>(size, input->Byte()));
    } else if (action == kLitter && is_file) {
      corvane_test::AppendToFile(path, input->Take(input->Byte()));
    } else if (action == kNewFile && fits) {
      corvane_test::WriteFile(path, input->Take(input->Byte()));
    } else if (action == kFolder && fits) {
      fs::create_directory(path);
      corvane_test::WriteFile(path + "/inside", {'i'});
    } else if (action == kRemove && is_file && judge_.MayRemove(path)) {
      fs::remove(path);
    }
  }

  corvane_test::WorkingDir inside_;
  PluginDriver driver_;
  PluginJudge judge_;
};

// Thousands of small files that nobody keeps: memory serves them best.
std::string ParentFolder() {
  return access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                                       : fs::temp_directory_path().string();
}

}  // namespace
}  // namespace corvane_fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace corvane_fuzz;
  av_log_set_level(AV_LOG_QUIET);
  const corvane_test::TempDir folder(ParentFolder());
  Run run(folder.path());
  Input input(data, size);
  for (int i = 0; i < kMostActions && !input.AtEnd(); ++i) run.Act(&input);
  run.End();
  return 0;
}
