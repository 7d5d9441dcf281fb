// How figures, formats and paths stand in a sentence.
#ifndef CORVANE_HOST_TERMINAL_WORDING_H_
#define CORVANE_HOST_TERMINAL_WORDING_H_

#include <cstdint>
#include <string>

#include "audio/audio_source.h"

namespace corvane {

// A path as one word of a shell's command line that no program takes for an
// option.
std::string shell_word(const std::string& path);

// 0:07.0, 12:34.5, 1:02:03.4: tenths rounded down.
std::string clock_tenths(int64_t milliseconds);

// 12.3 KiB, 4.5 MiB, 1.20 GiB
std::string file_size(int64_t bytes);

// "1 frame", "2 frames"
std::string counted(int64_t count, const std::string& noun);

// "1 channel at 48000 Hz"; 0 channels are those of a layout of the file's own.
std::string channels_at(const PcmFormat& format);

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_WORDING_H_
