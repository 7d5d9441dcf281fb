#include "host/sound_file.h"

#include <sndfile.h>

#include <cstdlib>

namespace corvane_test {
namespace {

SNDFILE* open_for_writing(const std::string& path, int format, int rate,
                          int channels) {
  SF_INFO info = {};
  info.format = format;
  info.samplerate = rate;
  info.channels = channels;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  if (file == nullptr) std::abort();
  return file;
}

void finish(SNDFILE* file, sf_count_t written, size_t samples) {
  if (written != static_cast<sf_count_t>(samples)) std::abort();
  if (sf_close(file) != 0) std::abort();
}

}  // namespace

void WriteFloats(const std::string& path, int format, int rate, int channels,
                 const std::vector<float>& samples) {
  SNDFILE* file = open_for_writing(path, format, rate, channels);
  finish(file,
         sf_write_float(file, samples.data(),
                        static_cast<sf_count_t>(samples.size())),
         samples.size());
}

void WriteInts(const std::string& path, int format, int rate, int channels,
               const std::vector<int32_t>& samples) {
  SNDFILE* file = open_for_writing(path, format, rate, channels);
  finish(file,
         sf_write_int(file, samples.data(),
                      static_cast<sf_count_t>(samples.size())),
         samples.size());
}

void WriteShorts(const std::string& path, int format, int rate, int channels,
                 const std::vector<int16_t>& samples) {
  SNDFILE* file = open_for_writing(path, format, rate, channels);
  finish(file,
         sf_write_short(file, samples.data(),
                        static_cast<sf_count_t>(samples.size())),
         samples.size());
}

void WriteWav(const std::string& path, const Bytes& pcm, int rate,
              int channels) {
  WriteShorts(path, SF_FORMAT_WAV | SF_FORMAT_PCM_16, rate, channels,
              Samples(pcm));
}

std::vector<int16_t> Samples(const Bytes& pcm) {
  std::vector<int16_t> samples;
  for (size_t i = 0; i + 1 < pcm.size(); i += 2) {
    samples.push_back(static_cast<int16_t>(pcm[i] | pcm[i + 1] << 8));
  }
  return samples;
}

}  // namespace corvane_test
