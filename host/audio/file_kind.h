// What a file is, by how it starts.
#ifndef CORVANE_HOST_AUDIO_FILE_KIND_H_
#define CORVANE_HOST_AUDIO_FILE_KIND_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

// How many bytes from a file's start tell.
constexpr size_t kKindBytes = 262;

constexpr char kKindWav[] = "WAV";
constexpr char kKindAdts[] = "ADTS";
// ADTS may follow the tag, but no capture begins with one.
constexpr char kKindTagged[] = "MP3 or AAC with an ID3 tag";

// The kind's name, "FLAC" for one; empty when the start is none that is known.
std::string kind_of(const std::vector<uint8_t>& start);

// Of what should be raw samples: the kind of audio file that they are instead;
// empty when they may be samples. Four bytes tell.
std::string kind_instead_of_samples(const std::vector<uint8_t>& start);

// Whether more bytes may turn this start into that of such a file.
bool may_become_a_kind(const std::vector<uint8_t>& start);

}  // namespace corvane

#endif  // CORVANE_HOST_AUDIO_FILE_KIND_H_
