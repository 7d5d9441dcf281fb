// A sound device as a source: it goes on by itself, and what isn't read in time
// is lost.
#ifndef CORVANE_HOST_AUDIO_MICROPHONE_H_
#define CORVANE_HOST_AUDIO_MICROPHONE_H_

#include <poll.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "audio/audio_source.h"
#include "audio/loss_watch.h"
#include "audio/sound_device.h"
#include "engine/file_descriptor.h"

namespace corvane {

// Called on the thread that reads.
using OnLoss = std::function<void(const Loss&)>;

class Microphone : public AudioSource {
 public:
  // An opened device that has agreed on `format`. `name` is empty for the
  // default one.
  Microphone(PcmPtr pcm, std::string name, PcmFormat format, OnLoss on_loss);

  PcmFormat format() const override { return format_; }
  std::string name() const override { return device_title(name_); }
  std::optional<int64_t> total_frames() const override { return std::nullopt; }
  int wait_fd() const override { return wake_ups_.get(); }
  // The first one starts the device.
  size_t Read(uint8_t* out, size_t size) override;
  bool has_ended() const override { return !error_.empty(); }
  std::string error() const override { return error_; }
  std::optional<Overruns> overruns() const override {
    return losses_.overruns();
  }
  std::string how_to_continue() const override;

 private:
  void WatchDescriptors();
  void AcknowledgeEvents();
  void Rest(int64_t us);
  void EndRest();
  size_t ReadFrames(uint8_t* out, size_t frames);
  void WatchForLoss();
  void Recover(int64_t error);
  void StartAgain(LossCause cause);
  void Fail(const char* what, int64_t error);

  const PcmPtr pcm_;
  const std::string name_;
  const PcmFormat format_;
  const OnLoss on_loss_;
  LossWatch losses_;
  std::vector<pollfd> descriptors_;
  // What is waited on: the device's descriptors, as one, or the end of a rest.
  FileDescriptor wake_ups_;
  FileDescriptor device_;
  FileDescriptor rest_;
  bool is_resting_ = false;
  bool is_polled_ = false;  // for want of a descriptor that can be waited on
  bool has_started_ = false;
  const snd_pcm_sframes_t period_frames_;
  int64_t read_frames_ = 0;
  // Those and what was left to read, when that was last looked at.
  int64_t come_frames_ = 0;
  std::string error_;
};

// Opens the device `name`, the default one if empty, in the format `wanted`,
// whose fields are 0 where it is the device's to choose. NULL with `error`
// filled when it can't be had.
std::unique_ptr<AudioSource> open_microphone(const std::string& name,
                                             const PcmFormat& wanted,
                                             OnLoss on_loss,
                                             DeviceError* error);

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_MICROPHONE_H_
