// A length of time as a user types it.
#ifndef CORVANE_HOST_COMMANDS_TIME_WORD_H_
#define CORVANE_HOST_COMMANDS_TIME_WORD_H_

#include <cstdint>
#include <optional>
#include <string>

namespace corvane {

// 90 (seconds), 2.5s, 5m, 1h, 1:30 (minutes and seconds) or 1:30:00, in
// microseconds; nothing for any other word, and for what is longer than
// 1000 hours.
std::optional<int64_t> parse_time_word(const std::string& word);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_TIME_WORD_H_
