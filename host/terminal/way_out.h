// What a user can do about a plugin's error.
#ifndef CORVANE_HOST_TERMINAL_WAY_OUT_H_
#define CORVANE_HOST_TERMINAL_WAY_OUT_H_

#include <string>

#include "audio/audio_source.h"
#include "engine/plugin_reply.h"
#include "terminal/console.h"

namespace corvane {

// A sentence's second half that names the way out of `error` for a take to
// `capture_path` from `source`; empty when none is known.
std::string way_out(const PluginError& error, const std::string& capture_path,
                    const AudioSource& source);

// Why no capture can hold the rate and channels of `source`, with the way out;
// empty when one can.
std::string objection_to_format(const AudioSource& source);

// The way out for a command that changes the file at `path` in place, by the
// errno value of what failed.
std::string way_to_change(const PluginError& error, const std::string& path);

// The command that saves the audio of the WAV file at `path`, whose sizes are
// wrong, whatever its header's layout. ffmpeg goes by that layout.
std::string way_to_save_wav(const std::string& path);

// tone.wav becomes tone-converted.wav.
std::string converted_name(const std::string& path);

// Every field of the plugin's error, where the user has asked for that much.
void tell_in_full(const PluginError& error, Console* console);

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_WAY_OUT_H_
