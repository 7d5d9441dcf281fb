// What a user can do about a plugin's error.
#ifndef CORVANE_HOST_WAY_OUT_H_
#define CORVANE_HOST_WAY_OUT_H_

#include <string>

#include "audio_source.h"
#include "plugin_reply.h"

namespace corvane {

// A sentence's second half that names the way out of `error` for a take to
// `capture_path` from `source`; empty when none is known.
std::string way_out(const PluginError& error, const std::string& capture_path,
                    const AudioSource& source);

}  // namespace corvane

#endif  // CORVANE_HOST_WAY_OUT_H_
