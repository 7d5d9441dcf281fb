// A plugin behind its channels that takes messages as bytes, broken ones too,
// one at a time, and keeps what came of each.
#ifndef CORVANE_FUZZ_PLUGIN_DRIVER_H_
#define CORVANE_FUZZ_PLUGIN_DRIVER_H_

#include <flutter_linux/flutter_linux.h>

#include <memory>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "support/bytes.h"
#include "support/glib_log.h"
#include "support/reply.h"

namespace corvane_fuzz {

using corvane_test::Bytes;

// A message on the method channel, as its receiver decodes it.
class Message {
 public:
  explicit Message(const Bytes& bytes);
  ~Message();
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  GBytes* bytes() const { return bytes_; }
  bool decodes() const { return args_ != nullptr; }
  // Of a message that decodes. The arguments may be of the null type.
  const std::string& method() const { return method_; }
  FlValue* args() const { return args_; }

 private:
  GBytes* bytes_;
  std::string method_;
  FlValue* args_ = nullptr;
};

// What one message, or a new plugin, brought about.
struct Outcome {
  corvane_test::Reply reply;
  std::vector<std::string> lines;  // log lines and answer, as they arrived
  Bytes written;                   // by the plugin, to whatever file
};

class PluginDriver {
 public:
  PluginDriver();
  ~PluginDriver();

  // Sends a message that decodes and waits for its one answer. `method` names
  // it in the lines.
  Outcome Call(const Message& message, const std::string& method);
  // Sends one that doesn't: it is reported and dropped at once.
  void SendBroken(const Message& message);
  // Sends anything to the log's channel, which answers at once, and has the log
  // relayed again afterwards.
  void SendToLog(const Message& message);
  // Takes the plugin down, which ends its take, and registers another.
  Outcome Restart();

 private:
  void Register();
  void Listen();
  // Delivers what the worker left behind, too.
  void Shutdown();
  // GLib has heard nothing but the plugin's own lines since the last look.
  void ExpectQuiet();

  corvane_test::GlibLogCapture glib_;
  std::unique_ptr<corvane::Engine> engine_;
  std::vector<std::string> lines_;
};

}  // namespace corvane_fuzz

#endif  // CORVANE_FUZZ_PLUGIN_DRIVER_H_
