/* Functions built in other languages than the tests; each makes a list of one
 * value and returns its length. */
#ifndef CORVANE_TESTS_EMBEDDING_HEADERS_AS_H_
#define CORVANE_TESTS_EMBEDDING_HEADERS_AS_H_

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

size_t headers_work_as_c(void);
size_t headers_work_as_cxx14(void);

#ifdef __cplusplus
}
#endif

#endif /* CORVANE_TESTS_EMBEDDING_HEADERS_AS_H_ */
