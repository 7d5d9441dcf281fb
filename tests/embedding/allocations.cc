#include "allocations.h"

namespace {

thread_local bool watching = false;
thread_local size_t total_bytes = 0;

void count(size_t size) {
  if (watching) total_bytes += size;
}

}  // namespace

AllocationWatch::AllocationWatch() {
  total_bytes = 0;
  watching = true;
}

AllocationWatch::~AllocationWatch() { watching = false; }

size_t AllocationWatch::total() { return total_bytes; }

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZER_OWNS_MALLOC 1
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZER_OWNS_MALLOC 1
#endif

#ifdef SANITIZER_OWNS_MALLOC

// The sanitizers have malloc for themselves, but tell of each call. Declared
// here because GCC does not install the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*malloc_hook)(const volatile void* block, size_t size),
    void (*free_hook)(const volatile void* block));

namespace {

[[maybe_unused]] const int installed =
    __sanitizer_install_malloc_and_free_hooks(
        [](const volatile void*, size_t size) { count(size); },
        [](const volatile void*) {});

}  // namespace

#else

// The program's own definitions stand before libc's for every library in it;
// libc has its functions under these names too.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t elements, size_t size);
void* __libc_realloc(void* old, size_t size);

void* malloc(size_t size) {
  count(size);
  return __libc_malloc(size);
}

void* calloc(size_t elements, size_t size) {
  count(elements * size);
  return __libc_calloc(elements, size);
}

void* realloc(void* old, size_t size) {
  count(size);
  return __libc_realloc(old, size);
}

}  // extern "C"

#endif
