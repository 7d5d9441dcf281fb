// Writing of ADTS frames (ISO/IEC 14496-3, 1.A.2). Pure; any thread.
#ifndef CORVANE_SRC_ADTS_FRAME_H_
#define CORVANE_SRC_ADTS_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "adts/stream_config.h"

namespace adts {

// Length in bytes of the header written: the form without CRC.
constexpr size_t kHeaderSize = 7;

// The largest aac_frame_length (13 bits), header included.
constexpr size_t kMaxFrameSize = 8191;

// Makes `out` exactly one ADTS frame: a header of 7 bytes that says `config`,
// variable bit rate and one raw data block, then the `size` bytes of `payload`
// (which may be null when `size` is 0). The values of `config` are combined
// unmasked: they must come from FrequencyIndexOf and IsChannelConfig.
//
// Returns false and leaves `out` alone when the payload has more than 8184
// bytes. The vector's storage is reused, so steady framing allocates nothing.
bool Frame(const StreamConfig& config, const uint8_t* payload, size_t size,
           std::vector<uint8_t>* out);

}  // namespace adts

#endif  // CORVANE_SRC_ADTS_FRAME_H_
