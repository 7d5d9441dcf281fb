// Watches the heap, to prove that a message can not make a decoder ask for
// memory that its bytes do not justify.
#ifndef CORVANE_TESTS_EMBEDDING_ALLOCATIONS_H_
#define CORVANE_TESTS_EMBEDDING_ALLOCATIONS_H_

#include <cstddef>

// Counts every malloc, calloc, realloc and new of this thread while it lives,
// whoever makes it. One at a time.
class AllocationWatch {
 public:
  AllocationWatch();
  ~AllocationWatch();
  AllocationWatch(const AllocationWatch&) = delete;
  AllocationWatch& operator=(const AllocationWatch&) = delete;

  // Bytes asked for so far, whether given back or not.
  static size_t total();
};

#endif  // CORVANE_TESTS_EMBEDDING_ALLOCATIONS_H_
