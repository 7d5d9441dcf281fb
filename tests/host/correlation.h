// Whether one sound is in another, and where.
#ifndef CORVANE_TESTS_HOST_CORRELATION_H_
#define CORVANE_TESTS_HOST_CORRELATION_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/bytes.h"

namespace corvane_test {

using Waveform = std::vector<double>;

// Of mono s16le.
Waveform samples_of(const Bytes& pcm);

double energy_of(const Waveform& signal, size_t from, size_t size);

// Of two pieces of equal size: 1 where one is the other, at any level; 0 where
// the other has no such piece.
double correlation(const Waveform& one, size_t from, const Waveform& other,
                   size_t other_from, size_t size);

// The first sample that is to be heard.
int64_t onset_of(const Waveform& signal);

// Where in `recorded` the piece of `played` is that begins at `from`: the lag
// with the greatest correlation among those from `least` to `most`.
int64_t lag_of(const Waveform& played, size_t from, size_t size,
               const Waveform& recorded, int64_t least, int64_t most);

// Where the loudest piece of this size begins, between two places.
size_t loudest_of(const Waveform& signal, size_t from, size_t to, size_t size);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_CORRELATION_H_
