// Values of every type with the bytes that they are on the wire, worked out by
// hand from the format.
#ifndef CORVANE_TESTS_EMBEDDING_VECTORS_H_
#define CORVANE_TESTS_EMBEDDING_VECTORS_H_

#include <functional>
#include <string>
#include <vector>

#include "handles.h"

struct Vector {
  std::string name;
  std::function<FlValue*()> make;  // Transfer full.
  Octets octets;
};

const std::vector<Vector>& vectors();

#endif  // CORVANE_TESTS_EMBEDDING_VECTORS_H_
