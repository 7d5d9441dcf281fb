#include "commands/info_table.h"

#include <glib.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "looks/findings.h"
#include "terminal/wording.h"

namespace corvane {
namespace {

constexpr size_t kLabelWidth = 10;
constexpr size_t kRunsShown = 10;

std::string escaped(char c) {
  char text[5];
  std::snprintf(text, sizeof(text), "\\x%02x", static_cast<unsigned char>(c));
  return text;
}

// printable(), and the same for what is no UTF-8, or steers a terminal as such.
std::string shown(const std::string& text) {
  std::string result;
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end;) {
    const gunichar letter = g_utf8_get_char_validated(at, end - at);
    const bool is_letter = letter < 0x80000000U;
    const char* const next = is_letter ? g_utf8_next_char(at) : at + 1;
    if (is_letter && g_unichar_iscntrl(letter) == FALSE) {
      result.append(at, next);
    } else {
      for (const char* byte = at; byte < next; ++byte) result += escaped(*byte);
    }
    at = next;
  }
  return result;
}

std::string row(const std::string& label, const std::string& text) {
  const std::string gap(kLabelWidth - label.size(), ' ');
  return "  " + label + gap + text + "\n";
}

std::string format_rows(const CaptureLook& look) {
  if (!look.format) return "";
  std::string rows = row("format", channels_at(*look.format));
  const int last_rate = look.scan.sample_rate;
  if (last_rate != look.format->sample_rate) {
    rows += row("", "the last at " + std::to_string(last_rate) + " Hz, by");
    rows += row("", "which the time is reckoned");
  }
  return rows;
}

std::string torn_rows(const std::string& path, int64_t bytes, bool is_in_use) {
  if (bytes == 0) return "";
  const std::string count = counted(bytes, "byte");
  if (is_in_use) return row("torn", count + ", maybe not whole yet");
  return row("torn", count + "; cut off by:") +
         row("", "corvane finalize " + shown(shell_word(path)));
}

std::string foreign_rows(const ForeignRuns& foreign) {
  if (foreign.count == 0) return "";
  std::string rows = row("foreign", counted(foreign.bytes, "byte") + " in " +
                                        counted(foreign.count, "run") + ":");
  const size_t some = std::min(foreign.listed.size(), kRunsShown);
  for (size_t i = 0; i < some; ++i) {
    const ForeignRun& run = foreign.listed[i];
    rows += row(
        "", counted(run.bytes, "byte") + " at " + std::to_string(run.offset));
  }
  const int64_t more = foreign.count - static_cast<int64_t>(some);
  return more == 0 ? rows
                   : rows + row("", "and " + std::to_string(more) + " more");
}

std::string holder_row(const CaptureHolder& holder) {
  return row("in use",
             "by " + (holder.pid ? "process " + std::to_string(*holder.pid)
                                 : std::string("another corvane")));
}

}  // namespace

std::string info_table(const std::string& path, const FileLook& look,
                       const std::optional<CaptureHolder>& holder) {
  const CaptureLook& capture = *look.capture;
  const Findings findings = findings_of(capture);
  std::string table = shown(path) + "\n" +
                      row("audio", clock_tenths(findings.duration_ms) + " in " +
                                       counted(capture.frames(), "frame")) +
                      format_rows(capture) +
                      row("size", file_size(capture.size) + " (" +
                                      counted(capture.size, "byte") + ")") +
                      torn_rows(path, findings.torn_bytes, holder.has_value()) +
                      foreign_rows(look.foreign);
  if (findings.foreign_behind > 0) {
    table += row("behind", counted(findings.foreign_behind, "foreign byte"));
  }
  return holder ? table + holder_row(*holder) : table;
}

}  // namespace corvane
