// The audio format in a method's arguments. Main thread; touches its arguments
// alone.
#ifndef CORVANE_SRC_ENCODER_FORMAT_ARGS_H_
#define CORVANE_SRC_ENCODER_FORMAT_ARGS_H_

#include <flutter_linux/flutter_linux.h>

#include <cstdint>
#include <limits>
#include <string>

#include "adts/stream_config.h"
#include "report/native_error.h"

namespace {

struct FormatArgs {
  int32_t sample_rate = 0;   // Hz
  int32_t channels = 0;      // interleaved channels of the PCM
  int64_t bit_rate = 64000;  // bit/s
};

// The value of a map's `key`, borrowed; null unless `args` is a map that holds
// the key with a value of `type`.
FlValue* lookup_typed(FlValue* args, const char* key, FlValueType type) {
  if (args == nullptr || fl_value_get_type(args) != FL_VALUE_TYPE_MAP) {
    return nullptr;
  }
  FlValue* value = fl_value_lookup_string(args, key);
  return value != nullptr && fl_value_get_type(value) == type ? value : nullptr;
}

// The map's string under `key`, borrowed; null when it is missing or empty.
const char* lookup_path(FlValue* args, const char* key) {
  FlValue* value = lookup_typed(args, key, FL_VALUE_TYPE_STRING);
  const char* path = value == nullptr ? nullptr : fl_value_get_string(value);
  return path != nullptr && *path != '\0' ? path : nullptr;
}

bool lookup_positive_int32(FlValue* args, const char* key, int32_t* out) {
  FlValue* value = lookup_typed(args, key, FL_VALUE_TYPE_INT);
  if (value == nullptr) {
    return false;
  }
  const int64_t number = fl_value_get_int(value);
  if (number < 1 || number > std::numeric_limits<int32_t>::max()) {
    return false;
  }
  *out = static_cast<int32_t>(number);
  return true;
}

// Fills rate and channels, whatever their positive values; on failure `format`
// is left alone.
bool lookup_wav_format(FlValue* args, FormatArgs* format) {
  FormatArgs found = *format;
  if (!lookup_positive_int32(args, "sampleRate", &found.sample_rate) ||
      !lookup_positive_int32(args, "channels", &found.channels)) {
    return false;
  }
  *format = found;
  return true;
}

// Only an absent "bitRate" means the default: a null is more likely a slip in
// the application than a wish.
bool lookup_bit_rate(FlValue* args, int64_t* bit_rate) {
  if (fl_value_lookup_string(args, "bitRate") == nullptr) {
    *bit_rate = FormatArgs().bit_rate;
    return true;
  }
  FlValue* value = lookup_typed(args, "bitRate", FL_VALUE_TYPE_INT);
  if (value == nullptr || fl_value_get_int(value) < 1) {
    return false;
  }
  *bit_rate = fl_value_get_int(value);
  return true;
}

// Fills `format` for a capture; on failure `error` is overwritten and says what
// `method` requires or what ADTS headers cannot express.
bool lookup_adts_format(FlValue* args, const std::string& method,
                        FormatArgs* format, NativeError* error) {
  if (!lookup_wav_format(args, format)) {
    *error =
        plain_error(kErrInvalidArgs,
                    method + " requires positive int sampleRate and channels");
    return false;
  }
  if (!lookup_bit_rate(args, &format->bit_rate)) {
    *error = plain_error(kErrInvalidArgs,
                         method + " bitRate must be a positive int");
    return false;
  }
  if (adts::FrequencyIndexOf(format->sample_rate) < 0) {
    *error = plain_error(
        kErrUnsupportedFormat,
        "ADTS has no index for " + std::to_string(format->sample_rate) + " Hz");
    return false;
  }
  if (!adts::IsChannelConfig(format->channels)) {
    *error = plain_error(kErrUnsupportedFormat,
                         "ADTS cannot express " +
                             std::to_string(format->channels) + " channels");
    return false;
  }
  return true;
}

}  // namespace

#endif  // CORVANE_SRC_ENCODER_FORMAT_ARGS_H_
