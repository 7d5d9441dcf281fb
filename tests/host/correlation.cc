#include "host/correlation.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace corvane_test {

Waveform samples_of(const Bytes& pcm) {
  Waveform samples(pcm.size() / 2);
  for (size_t i = 0; i < samples.size(); ++i) {
    int16_t sample = 0;
    std::memcpy(&sample, &pcm[2 * i], sizeof(sample));
    samples[i] = sample;
  }
  return samples;
}

double energy_of(const Waveform& signal, size_t from, size_t size) {
  double energy = 0;
  for (size_t i = from; i < from + size; ++i) energy += signal[i] * signal[i];
  return energy;
}

double correlation(const Waveform& one, size_t from, const Waveform& other,
                   size_t other_from, size_t size) {
  if (other_from > other.size() || size > other.size() - other_from) return 0;
  double product = 0;
  for (size_t i = 0; i < size; ++i) {
    product += one[from + i] * other[other_from + i];
  }
  const double energies =
      energy_of(one, from, size) * energy_of(other, other_from, size);
  return energies > 0 ? product / std::sqrt(energies) : 0;
}

int64_t onset_of(const Waveform& signal) {
  const auto loud = std::find_if(signal.begin(), signal.end(),
                                 [](double sample) { return sample > 500; });
  return loud - signal.begin();
}

int64_t lag_of(const Waveform& played, size_t from, size_t size,
               const Waveform& recorded, int64_t least, int64_t most) {
  int64_t best = least;
  double highest = -1;
  for (int64_t lag = least; lag <= most; ++lag) {
    const int64_t at = static_cast<int64_t>(from) + lag;
    if (at < 0 || at + static_cast<int64_t>(size) >
                      static_cast<int64_t>(recorded.size())) {
      continue;
    }
    const double found =
        correlation(played, from, recorded, static_cast<size_t>(at), size);
    if (found > highest) {
      highest = found;
      best = lag;
    }
  }
  return best;
}

size_t loudest_of(const Waveform& signal, size_t from, size_t to, size_t size) {
  size_t best = from;
  double most = -1;
  for (size_t at = from; at + size <= to; at += size) {
    const double energy = energy_of(signal, at, size);
    if (energy > most) best = at;
    most = std::max(most, energy);
  }
  return best;
}

}  // namespace corvane_test
