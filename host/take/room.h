// The room that a take has on its disk.
#ifndef CORVANE_HOST_TAKE_ROOM_H_
#define CORVANE_HOST_TAKE_ROOM_H_

#include <cstdint>
#include <optional>
#include <string>

namespace corvane {

// Bytes that this user may still write to the file system of `path`; nothing
// when it doesn't say.
std::optional<int64_t> free_bytes_at(const std::string& path);

// A file's size in bytes; 0 where there is none.
int64_t size_at(const std::string& path);

}  // namespace corvane

#endif  // CORVANE_HOST_TAKE_ROOM_H_
