#include "commands/repair_wav_command.h"

#include <optional>

#include "looks/wav_look.h"
#include "take/capture_lock.h"
#include "take/plugin_call.h"
#include "terminal/exit_status.h"
#include "terminal/json_output.h"
#include "terminal/way_out.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

// What is known of the file before it is repaired.
struct Before {
  std::string error;  // why there is nothing to repair, as a clause
  WavObjection objection;
  WavStart start;
};

Before look_before(const std::string& path) {
  const RegularFile file(path);
  Before before;
  before.error = file.error();
  if (file.is_missing()) before.error += "; check the name";
  if (file.is_empty()) before.error += ": there is no audio in it";
  if (!before.error.empty()) return before;
  before.start = file.Read(0, kWavHeaderSize);
  before.objection = objection_to_repair(file);
  return before;
}

std::string refusal(const std::string& path, const WavObjection& objection) {
  std::string text = path + ": " + objection.reason + "; it was left alone";
  if (objection.has_audio) {
    text += "; save its audio with: " + way_to_save_wav(path);
  }
  return text;
}

// What was asked for, and for the rest what the old header says.
std::optional<PcmFormat> format_to_write(const RepairWavArguments& arguments,
                                         const Before& before) {
  PcmFormat format = {arguments.sample_rate, arguments.channels};
  const std::optional<PcmFormat> old = format_in(before.start);
  if (format.sample_rate == 0 && old) format.sample_rate = old->sample_rate;
  if (format.channels == 0 && old) format.channels = old->channels;
  if (format.sample_rate == 0 || format.channels == 0) return std::nullopt;
  return format;
}

PluginAnswer repair(const std::string& path, const PcmFormat& format,
                    LogOutput* log) {
  g_autoptr(FlValue) args = fl_value_new_map();
  fl_value_set_string_take(args, "wavPath", fl_value_new_string(path.c_str()));
  fl_value_set_string_take(args, "sampleRate",
                           fl_value_new_int(format.sample_rate));
  fl_value_set_string_take(args, "channels", fl_value_new_int(format.channels));
  return ask_plugin("finalizeWavOnly", args, log);
}

Json changes(const WavStart& before, const WavStart& after) {
  Json changed = Json::object();
  for (const WavField& field : kWavFields) {
    const uint32_t from = value_of(field, before);
    const uint32_t to = value_of(field, after);
    if (from != to) changed[field.name] = {{"from", from}, {"to", to}};
  }
  return changed;
}

std::string in_words(const Json& changed) {
  std::string text;
  for (const auto& [name, change] : changed.items()) {
    text += (text.empty() ? "" : ", ") + name + " from " +
            change["from"].dump() + " to " + change["to"].dump();
  }
  return text;
}

std::string what_changed(const Before& before, const WavStart& after,
                         const Json& changed) {
  if (before.start == after) return "the header was right already";
  if (!before.objection.reason.empty()) {
    return "a WAV header was written over its first 44 bytes; they are in the "
           "result, as headerBefore";
  }
  return changed.empty() ? "the header's names were written anew"
                         : "changed " + in_words(changed);
}

std::string in_hex(const WavStart& start) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const uint8_t byte : start) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

int report_repair(const std::string& path, const PcmFormat& format,
                  const Before& before, Console* console) {
  const RegularFile file(path);
  const WavStart after = file.Read(0, kWavHeaderSize);
  const Json changed = changes(before.start, after);
  console->Note(path + ": " + what_changed(before, after, changed));
  const int64_t data_bytes = file.size() - int64_t{kWavHeaderSize};
  const int64_t bytes_per_frame = int64_t{format.channels} * 2;
  Json json;
  json["path"] = path;
  json["bytes"] = file.size();
  json["dataBytes"] = data_bytes;
  json["durationMs"] = data_bytes / bytes_per_frame * 1000 / format.sample_rate;
  json["sampleRate"] = format.sample_rate;
  json["channels"] = format.channels;
  json["changed"] = changed;
  json["headerBefore"] = in_hex(before.start);
  return print_json(json, "the header of " + path + " is repaired", console)
             ? kExitDone
             : kExitFailed;
}

void report_failure(const std::string& path, const PcmFormat& format,
                    const PluginError& error, Console* console) {
  const std::string advice = way_to_change(error, path);
  console->Complain(path + ": " + error.message +
                    (advice.empty() ? "" : "; " + advice));
  tell_in_full(error, console);
  console->Complain(path +
                    ": the audio behind the header is untouched; repair it "
                    "again with: corvane repair-wav " +
                    shell_word(path) + " -r " +
                    std::to_string(format.sample_rate) + " -c " +
                    std::to_string(format.channels));
}

}  // namespace

int run_repair_wav(const RepairWavArguments& arguments, Console* console,
                   LogOutput* log) {
  const std::string& path = arguments.path;
  CaptureLock lock;
  if (const auto holder = lock.Take(path)) {
    console->Complain(path + ": " + held_by(*holder));
    return kExitFailed;
  }
  const Before before = look_before(path);
  if (!before.error.empty()) {
    console->Complain(path + ": " + before.error);
    return kExitFailed;
  }
  if (!before.objection.reason.empty() && !arguments.force) {
    console->Complain(refusal(path, before.objection));
    console->Complain(path + ": --force writes the 44 bytes all the same");
    return kExitFailed;
  }
  const std::optional<PcmFormat> format = format_to_write(arguments, before);
  if (!format) {
    console->Complain(path +
                      ": its header holds no rate and channels that can be "
                      "believed; say them, as in -r 48000 -c 1");
    return kExitUsage;
  }
  const PluginAnswer answer = repair(path, *format, log);
  if (answer.error) {
    report_failure(path, *format, *answer.error, console);
    return kExitFailed;
  }
  return report_repair(path, *format, before, console);
}

}  // namespace corvane
