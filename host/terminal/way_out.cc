#include "terminal/way_out.h"

#include <adts/stream_config.h>
#include <glib.h>

#include <cerrno>

#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr int kMixdownChannels = 2;
constexpr char kElsewhere[] =
    "name a file in another folder, or on another disk";

// The lowest rate of ADTS that loses nothing, or its highest.
int next_adts_rate(int rate) {
  int best = adts::kSamplingFrequencies.front();
  for (const int candidate : adts::kSamplingFrequencies) {
    if (candidate >= rate) best = candidate;
  }
  return best;
}

std::string convert_source(const AudioSource& source) {
  const PcmFormat format = source.format();
  const int rate = next_adts_rate(format.sample_rate);
  const bool too_many = !adts::IsChannelConfig(format.channels);
  if (source.wait_fd() >= 0) {
    return "feed it " + std::to_string(rate) + " Hz" +
           (too_many ? " and 1 to 6 channels" : "") +
           " instead, and say so with -r and -c";
  }
  std::string command = "ffmpeg -i " + shell_word(source.name());
  if (rate != format.sample_rate) command += " -ar " + std::to_string(rate);
  if (too_many) command += " -ac " + std::to_string(kMixdownChannels);
  return "convert it first: " + command + " " +
         shell_word(converted_name(source.name()));
}

std::string make_folder(const std::string& path) {
  g_autofree gchar* folder = g_path_get_dirname(path.c_str());
  if (g_file_test(folder, G_FILE_TEST_EXISTS)) return kElsewhere;
  return "create the folder first: mkdir -p " + shell_word(folder);
}

std::string make_writable(int64_t native_code, const std::string& path) {
  switch (native_code) {
    case ENOSPC:
    case EDQUOT:
      return "free some space, or record to another disk";
    case EFBIG:
      return "raise the file size limit (ulimit -f), or record shorter takes";
    case ENOENT:
      return make_folder(path);
    case EACCES:
    case EPERM:
    case EROFS:
      return "name a file in a folder that you may write to";
    case ENAMETOOLONG:
      return "give it a shorter name";
    case EMFILE:
    case ENFILE:
      return "raise the limit on open files (ulimit -n)";
    default:
      return kElsewhere;
  }
}

}  // namespace

std::string way_to_save_wav(const std::string& path) {
  return "ffmpeg -ignore_length 1 -i " + shell_word(path) + " -c:a copy " +
         shell_word(converted_name(path));
}

std::string converted_name(const std::string& path) {
  const size_t slash = path.rfind('/');
  const size_t base = slash == std::string::npos ? 0 : slash + 1;
  const size_t dot = path.rfind('.');
  const size_t stem_end =
      dot == std::string::npos || dot <= base ? path.size() : dot;
  return path.substr(0, stem_end) + "-converted.wav";
}

std::string way_to_change(const PluginError& error, const std::string& path) {
  switch (error.native_code.value_or(0)) {
    case EACCES:
      return "make it writable first: chmod u+w " + shell_word(path);
    case EROFS:
      return "copy it to a disk that you may write to";
    case ENOSPC:
    case EDQUOT:
      return "free some space first";
    default:
      return "";
  }
}

std::string objection_to_format(const AudioSource& source) {
  const PcmFormat format = source.format();
  std::string reason;
  if (adts::FrequencyIndexOf(format.sample_rate) < 0) {
    reason =
        "ADTS has no index for " + std::to_string(format.sample_rate) + " Hz";
  } else if (!adts::IsChannelConfig(format.channels)) {
    reason =
        "ADTS cannot express " + std::to_string(format.channels) + " channels";
  }
  return reason.empty() ? "" : reason + "; " + convert_source(source);
}

std::string way_out(const PluginError& error, const std::string& capture_path,
                    const AudioSource& source) {
  if (error.code == "UNSUPPORTED_FORMAT") return convert_source(source);
  if (error.code == "VERIFY_FAILED") return "no audio arrived; record again";
  if (error.code != "WRITE_FAILED") return "";
  if (error.native_code) return make_writable(*error.native_code, capture_path);
  return "move the file away, or name another one";
}

void tell_in_full(const PluginError& error, Console* console) {
  if (!console->is_verbose()) return;
  console->Complain("the plugin's error: " + describe(error));
}

}  // namespace corvane
