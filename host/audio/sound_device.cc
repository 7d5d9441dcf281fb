#include "audio/sound_device.h"

#include <adts/stream_config.h>
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

namespace corvane {
namespace {

constexpr int kUsualRate = 48000;  // Hz
constexpr int kMostChannels = 6;   // of ADTS

// A kill costs a period at most, and each one is a wake-up.
constexpr unsigned kPeriodUs = 125000;
// Less than is read at a time, whatever the format: who holds a part of what
// PulseAudio's library has handed over when the server ends waits for ever.
constexpr int64_t kMostPeriodBytes = 65536;
constexpr unsigned kBufferUs = 4000000;
// A flush or a busy machine may take this long.
constexpr unsigned kLeastBufferUs = 1000000;

struct HwParamsFree {
  void operator()(snd_pcm_hw_params_t* params) const {
    snd_pcm_hw_params_free(params);
  }
};
using HwParams = std::unique_ptr<snd_pcm_hw_params_t, HwParamsFree>;

HwParams make_params() {
  snd_pcm_hw_params_t* params = nullptr;
  if (snd_pcm_hw_params_malloc(&params) < 0) std::abort();  // no memory
  return HwParams(params);
}

HwParams copy_of(const HwParams& params) {
  HwParams copy = make_params();
  snd_pcm_hw_params_copy(copy.get(), params.get());
  return copy;
}

std::string quoted(const std::string& word) {
  g_autofree gchar* text = g_shell_quote(word.c_str());
  return text;
}

// Its socket is in a folder that the session names.
std::string where_servers_are() {
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder != nullptr && *folder != '\0') return "";
  return "; a server that runs is found with XDG_RUNTIME_DIR=/run/user/" +
         std::to_string(getuid()) + ", which isn't set here, as under cron";
}

std::string why_not_open(const std::string& name, int error) {
  switch (-error) {
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return name.empty()
                 ? "there is none: no sound card was found, and no sound "
                   "server runs; plug one in, and look with: corvane devices" +
                       where_servers_are()
                 : "there is no such device; see those there are with: "
                   "corvane devices";
    case EBUSY:
      return "another program is recording from it; see which with: fuser -v "
             "/dev/snd/*, or take a device that is shared, as -D default is "
             "where a sound server runs";
    case EACCES:
    case EPERM:
      return "you may not record from it; join the group \"audio\" with: sudo "
             "usermod -aG audio $USER, and log in again";
    case ECONNREFUSED:
      return "the sound server doesn't answer; start it, or take a device "
             "that needs none: corvane devices" +
             where_servers_are();
    default:
      return std::string("it can't be opened (") + snd_strerror(error) +
             "); see what else there is with: corvane devices";
  }
}

// What does the same by ALSA's converters.
std::string by_converter(const std::string& name) {
  if (name.rfind("hw:", 0) == 0) {
    return "; ALSA's converter can: -D " + quoted("plug" + name);
  }
  return "; ALSA's converter may: -D " + quoted("plug:'" + name + "'");
}

template <typename Fits>
std::string those_of(const std::vector<int>& values, Fits fits) {
  std::string text;
  for (const int value : values) {
    if (fits(value)) text += (text.empty() ? "" : ", ") + std::to_string(value);
  }
  return text;
}

// One thing to agree on: the rate, or the channels.
struct Choice {
  std::vector<int> values;  // that a capture can have, the likeliest first
  int (*test)(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value);
  int (*set)(snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value);
  const char* unit;
};

Choice choice_of_rate() {
  std::vector<int> rates(adts::kSamplingFrequencies.begin(),
                         adts::kSamplingFrequencies.end());
  std::stable_sort(rates.begin(), rates.end(), [](int one, int other) {
    return std::abs(one - kUsualRate) < std::abs(other - kUsualRate);
  });
  return {std::move(rates),
          [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value) {
            return snd_pcm_hw_params_test_rate(pcm, params,
                                               static_cast<unsigned>(value), 0);
          },
          [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value) {
            return snd_pcm_hw_params_set_rate(pcm, params,
                                              static_cast<unsigned>(value), 0);
          },
          " Hz"};
}

// Three come last, since no player can play them.
Choice choice_of_channels() {
  return {{1, 2, 4, 5, kMostChannels, 3},
          [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value) {
            return snd_pcm_hw_params_test_channels(
                pcm, params, static_cast<unsigned>(value));
          },
          [](snd_pcm_t* pcm, snd_pcm_hw_params_t* params, int value) {
            return snd_pcm_hw_params_set_channels(pcm, params,
                                                  static_cast<unsigned>(value));
          },
          " channels"};
}

// Sets what is wanted, or the likeliest; 0 with `error` when it can't be.
int agree(const Choice& choice, int wanted, snd_pcm_t* pcm,
          const std::string& name, snd_pcm_hw_params_t* params,
          DeviceError* error) {
  const auto fits = [&](int value) {
    return choice.test(pcm, params, value) == 0;
  };
  const auto found =
      std::find_if(choice.values.begin(), choice.values.end(), [&](int value) {
        return (wanted == 0 || value == wanted) && fits(value);
      });
  if (found != choice.values.end() && choice.set(pcm, params, *found) == 0) {
    return *found;
  }
  std::vector<int> sorted = choice.values;
  std::sort(sorted.begin(), sorted.end());
  const std::string can = those_of(sorted, fits);
  error->is_of_format = true;
  error->text = wanted == 0 ? "it can do nothing that a capture can hold"
                            : std::to_string(wanted) + choice.unit +
                                  " can't be had from it for a capture";
  error->text +=
      can.empty() ? by_converter(name) : "; it can do " + can + choice.unit;
  return 0;
}

unsigned period_of(const PcmFormat& format) {
  const auto bytes_per_s =
      static_cast<int64_t>(format.bytes_per_frame()) * format.sample_rate;
  return static_cast<unsigned>(
      std::min<int64_t>(kPeriodUs, kMostPeriodBytes * 1'000'000 / bytes_per_s));
}

// The period first; where that leaves too short a buffer, the buffer.
int set_buffer(snd_pcm_t* pcm, const PcmFormat& format, HwParams* params) {
  HwParams tried = copy_of(*params);
  unsigned period_us = period_of(format);
  unsigned buffer_us = kBufferUs;
  snd_pcm_hw_params_set_period_time_near(pcm, tried.get(), &period_us, nullptr);
  snd_pcm_hw_params_set_buffer_time_near(pcm, tried.get(), &buffer_us, nullptr);
  if (buffer_us < kLeastBufferUs) {
    tried = copy_of(*params);
    buffer_us = kLeastBufferUs;
    period_us = period_of(format);
    snd_pcm_hw_params_set_buffer_time_near(pcm, tried.get(), &buffer_us,
                                           nullptr);
    snd_pcm_hw_params_set_period_time_near(pcm, tried.get(), &period_us,
                                           nullptr);
  }
  *params = std::move(tried);
  return snd_pcm_hw_params(pcm, params->get());
}

}  // namespace

std::string device_title(const std::string& name) {
  return name.empty() ? "the microphone" : "device " + name;
}

std::string alsa_name(const std::string& name) {
  return name.empty() ? "default" : name;
}

PcmPtr open_pcm(const std::string& name, DeviceError* error) {
  snd_pcm_t* pcm = nullptr;
  const int failed = snd_pcm_open(&pcm, alsa_name(name).c_str(),
                                  SND_PCM_STREAM_CAPTURE, SND_PCM_NONBLOCK);
  if (failed < 0) error->text = why_not_open(name, failed);
  return PcmPtr(failed < 0 ? nullptr : pcm);
}

PcmFormat agree_on_format(snd_pcm_t* pcm, const std::string& name,
                          const PcmFormat& wanted, DeviceError* error) {
  HwParams params = make_params();
  int failed = snd_pcm_hw_params_any(pcm, params.get());
  if (failed < 0) {
    error->text = why_not_open(name, failed);
    return {};
  }
  if (snd_pcm_hw_params_set_access(pcm, params.get(),
                                   SND_PCM_ACCESS_RW_INTERLEAVED) < 0 ||
      snd_pcm_hw_params_set_format(pcm, params.get(), SND_PCM_FORMAT_S16_LE) <
          0) {
    error->text = "it has no interleaved 16-bit samples" + by_converter(name);
    return {};
  }
  PcmFormat agreed;
  agreed.channels = agree(choice_of_channels(), wanted.channels, pcm, name,
                          params.get(), error);
  if (agreed.channels == 0) return {};
  agreed.sample_rate = agree(choice_of_rate(), wanted.sample_rate, pcm, name,
                             params.get(), error);
  if (agreed.sample_rate == 0) return {};
  failed = set_buffer(pcm, agreed, &params);
  if (failed == 0) return agreed;
  error->text = why_not_open(name, failed);
  return {};
}

}  // namespace corvane
