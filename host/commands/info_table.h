// What a look at a capture found, for a person.
#ifndef CORVANE_HOST_COMMANDS_INFO_TABLE_H_
#define CORVANE_HOST_COMMANDS_INFO_TABLE_H_

#include <optional>
#include <string>

#include "looks/file_look.h"
#include "take/capture_lock.h"

namespace corvane {

// A block of lines: the name, and a row for each thing that is to be said.
// Apart from names, formats of other programs and figures out of the ordinary
// it fits 40 columns. `look` is that of a capture; `holder` is at work on it.
std::string info_table(const std::string& path, const FileLook& look,
                       const std::optional<CaptureHolder>& holder);

}  // namespace corvane

#endif  // CORVANE_HOST_COMMANDS_INFO_TABLE_H_
