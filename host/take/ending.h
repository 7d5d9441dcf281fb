// Why a take ends. The first reason counts.
#ifndef CORVANE_HOST_TAKE_ENDING_H_
#define CORVANE_HOST_TAKE_ENDING_H_

#include <optional>
#include <utility>

#include "engine/plugin_reply.h"

namespace corvane {

enum class TakeEnd {
  kNone,      // it goes on
  kInput,     // the source's end
  kSignal,    // somebody asked for it
  kKey,       // likewise, at the terminal
  kDuration,  // it is as long as it was to be
  kError,     // the plugin failed
  kHeld,      // another program is at work on the file
  kRemoved,   // no name leads to the capture any more
};

// Of the thread that runs the main context.
class Ending {
 public:
  bool has_come() const { return end_ != TakeEnd::kNone; }
  TakeEnd end() const { return end_; }
  const std::optional<PluginError>& error() const { return error_; }

  void Come(TakeEnd end) {
    if (!has_come()) end_ = end;
  }
  // The first error counts, whatever ended the take.
  void Fail(std::optional<PluginError> error) {
    if (!error) return;
    if (!error_) error_ = std::move(error);
    Come(TakeEnd::kError);
  }

 private:
  TakeEnd end_ = TakeEnd::kNone;
  std::optional<PluginError> error_;
};

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_ENDING_H_
