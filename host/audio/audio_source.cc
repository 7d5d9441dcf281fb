#include "audio/audio_source.h"

#include <glib.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include "audio/file_kind.h"

namespace corvane {
namespace {

static_assert(G_BYTE_ORDER == G_LITTLE_ENDIAN,
              "samples go to the plugin in this machine's byte order");

struct SndfileCloser {
  void operator()(SNDFILE* file) const { sf_close(file); }
};
using SndfilePtr = std::unique_ptr<SNDFILE, SndfileCloser>;

class FileSource : public AudioSource {
 public:
  FileSource(SndfilePtr file, const SF_INFO& info, std::string path)
      : file_(std::move(file)), info_(info), path_(std::move(path)) {}

  PcmFormat format() const override {
    return {info_.samplerate, info_.channels};
  }
  std::string name() const override { return path_; }
  std::optional<int64_t> total_frames() const override {
    if (info_.frames <= 0 || info_.frames == SF_COUNT_MAX) return std::nullopt;
    return info_.frames;
  }
  int wait_fd() const override { return -1; }
  std::string how_to_continue() const override { return "-i REST"; }
  bool has_ended() const override { return has_ended_; }
  std::string error() const override { return error_; }

  size_t Read(uint8_t* out, size_t size) override {
    const size_t frames = size / format().bytes_per_frame();
    const bool is_16_bit =
        (info_.format & SF_FORMAT_SUBMASK) == SF_FORMAT_PCM_16;
    const sf_count_t got =
        is_16_bit ? ReadShorts(out, frames) : ReadFloats(out, frames);
    read_frames_ += got;
    has_ended_ = got == 0;
    // Now, for the next call clears libsndfile's error.
    if (got < static_cast<sf_count_t>(frames)) CheckEnd();
    return static_cast<size_t>(got) * format().bytes_per_frame();
  }

 private:
  sf_count_t ReadShorts(uint8_t* out, size_t frames) {
    samples_.resize(frames * static_cast<size_t>(info_.channels));
    const sf_count_t got = sf_readf_short(file_.get(), samples_.data(),
                                          static_cast<sf_count_t>(frames));
    CopyOut(out, got);
    return got;
  }

  // libsndfile's own conversion of floats to integers truncates, and what
  // would keep it from that scales a recording to its own peak.
  sf_count_t ReadFloats(uint8_t* out, size_t frames) {
    floats_.resize(frames * static_cast<size_t>(info_.channels));
    samples_.resize(floats_.size());
    const sf_count_t got = sf_readf_float(file_.get(), floats_.data(),
                                          static_cast<sf_count_t>(frames));
    std::transform(floats_.begin(), floats_.begin() + got * info_.channels,
                   samples_.begin(), to_s16);
    CopyOut(out, got);
    return got;
  }

  void CopyOut(uint8_t* out, sf_count_t frames) const {
    const size_t size =
        static_cast<size_t>(frames) * format().bytes_per_frame();
    if (size > 0) std::memcpy(out, samples_.data(), size);
  }

  // MP3 has no length of its own: libsndfile may have to go by the bit rate.
  bool has_exact_length() const {
    return total_frames() &&
           (info_.format & SF_FORMAT_TYPEMASK) != SF_FORMAT_MPEG;
  }

  void CheckEnd() {
    if (sf_error(file_.get()) != SF_ERR_NO_ERROR) {
      error_ =
          std::string("reading stopped early: ") + sf_strerror(file_.get());
      return;
    }
    if (has_exact_length() && read_frames_ < *total_frames()) {
      error_ = "the file ends after " + std::to_string(read_frames_) +
               " of the " + std::to_string(*total_frames()) +
               " sample frames its header promises";
    }
  }

  SndfilePtr file_;
  const SF_INFO info_;
  const std::string path_;
  std::vector<float> floats_;
  std::vector<int16_t> samples_;
  int64_t read_frames_ = 0;
  bool has_ended_ = false;
  std::string error_;
};

class RawSource : public AudioSource {
 public:
  RawSource(int fd, PcmFormat format, bool takes_any_start)
      : fd_(fd), format_(format), is_start_right_(takes_any_start) {}

  PcmFormat format() const override { return format_; }
  std::string name() const override { return "standard input"; }
  std::optional<int64_t> total_frames() const override { return std::nullopt; }
  int wait_fd() const override { return fd_; }
  std::string how_to_continue() const override { return "-i -"; }
  bool has_ended() const override { return has_ended_; }
  std::string error() const override { return error_; }

  size_t Read(uint8_t* out, size_t size) override {
    const size_t got = ReadSamples(out, size);
    has_ended_ = got == 0;
    return got;
  }

 private:
  size_t ReadSamples(uint8_t* out, size_t size) {
    size_t got = ReadOnce(out, size);
    if (is_start_right_) return got;
    // Few writers begin with so little that it can't be told yet; for them the
    // rest is waited for here.
    while (got > 0 && got < size && may_become_a_kind({out, out + got})) {
      const size_t more = ReadOnce(out + got, size - got);
      if (more == 0) break;
      got += more;
    }
    return CheckStart({out, out + got}) ? got : 0;
  }

  size_t ReadOnce(uint8_t* out, size_t size) {
    ssize_t got = 0;
    do {
      got = read(fd_, out, size);
    } while (got < 0 && errno == EINTR);
    if (got >= 0) return static_cast<size_t>(got);
    error_ = std::string("reading stopped early: ") + std::strerror(errno);
    return 0;
  }

  bool CheckStart(const std::vector<uint8_t>& start) {
    const std::string kind = kind_instead_of_samples(start);
    is_start_right_ = kind.empty();
    if (is_start_right_) return true;
    error_ = "it starts like " + kind +
             ", not like raw samples; save it as a file and name that with -i, "
             "or take it as samples with --raw";
    return false;
  }

  const int fd_;
  const PcmFormat format_;
  bool is_start_right_;
  bool has_ended_ = false;
  std::string error_;
};

// Empty when `path` is a file that can be opened for reading.
std::string why_unusable(const std::string& path) {
  struct stat file = {};
  if (stat(path.c_str(), &file) != 0 || access(path.c_str(), R_OK) != 0) {
    return std::strerror(errno);
  }
  // A read that waits for another process could not be interrupted.
  if (!S_ISREG(file.st_mode)) {
    return "not a regular file; pipe raw s16le in instead (with -i - and -r "
           "and "
           "-c)";
  }
  return "";
}

}  // namespace

int16_t to_s16(float sample) {
  const float scaled = sample * 32768.0f;
  if (std::isnan(scaled)) return 0;
  return static_cast<int16_t>(
      std::lrintf(std::clamp(scaled, -32768.0f, 32767.0f)));
}

std::unique_ptr<AudioSource> open_audio_file(const std::string& path,
                                             std::string* error) {
  *error = why_unusable(path);
  if (!error->empty()) return nullptr;
  SF_INFO info = {};
  SndfilePtr file(sf_open(path.c_str(), SFM_READ, &info));
  if (file == nullptr) {
    *error = std::string("not audio that libsndfile can read (") +
             sf_strerror(nullptr) + "); convert it first, for example to WAV";
    return nullptr;
  }
  return std::make_unique<FileSource>(std::move(file), info, path);
}

std::unique_ptr<AudioSource> open_raw_input(int fd, PcmFormat format,
                                            bool takes_any_start) {
  return std::make_unique<RawSource>(fd, format, takes_any_start);
}

}  // namespace corvane
