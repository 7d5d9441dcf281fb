// The places of foreign bytes held against a scan that only counts them.
#ifndef CORVANE_TESTS_HOST_FOREIGN_PLACES_H_
#define CORVANE_TESTS_HOST_FOREIGN_PLACES_H_

#include <string>

#include "support/bytes.h"

namespace corvane_test {

// What is told of the file at `path`, which holds `content`: as many bytes as
// the scan skips, and without them nothing but the frames is left up to the
// end of the last.
void ExpectForeignPlaces(const std::string& path, const Bytes& content,
                         const std::string& how);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_FOREIGN_PLACES_H_
