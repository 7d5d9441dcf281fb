// The `ffmpeg` command line as the reference: what it makes of the same PCM.
#ifndef CORVANE_TESTS_IDENTITY_FFMPEG_COMMAND_H_
#define CORVANE_TESTS_IDENTITY_FFMPEG_COMMAND_H_

#include <optional>
#include <vector>

#include "identity/take.h"
#include "support/bytes.h"

namespace corvane_test {

// The ADTS file of each take, in order; nothing where ffmpeg refuses it. One
// process encodes them all, unless one of them is refused. No option names a
// channel layout: ffmpeg guesses libavutil's default for the count.
std::vector<std::optional<Bytes>> EncodedByFfmpeg(
    const std::vector<Take>& takes);

}  // namespace corvane_test

#endif  // CORVANE_TESTS_IDENTITY_FFMPEG_COMMAND_H_
