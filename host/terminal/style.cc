#include "terminal/style.h"

#include <langinfo.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace corvane {
namespace {

// Asked of a locale of its own: the program's stays as it is.
bool is_utf8() {
  const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
  if (locale == nullptr) return false;
  const bool is = std::strcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0;
  freelocale(locale);
  return is;
}

bool ends_with(std::string_view text, std::string_view end) {
  return text.size() >= end.size() &&
         text.substr(text.size() - end.size()) == end;
}

// DEC's terminals and what calls itself monochrome have none.
bool has_colours() {
  const char* no_color = std::getenv("NO_COLOR");
  if (no_color != nullptr && *no_color != '\0') return false;
  const char* term = std::getenv("TERM");
  if (term == nullptr) return false;
  const std::string_view name = term;
  return !name.empty() && name != "dumb" && name.substr(0, 2) != "vt" &&
         !ends_with(name, "-m") && !ends_with(name, "-mono");
}

const char* code_of(Colour colour) {
  switch (colour) {
    case Colour::kGreen:
      return "\x1b[32m";
    case Colour::kYellow:
      return "\x1b[33m";
    case Colour::kRed:
      return "\x1b[31m";
    case Colour::kNone:
      break;
  }
  return "";
}

}  // namespace

Style style_of_environment() {
  Style style;
  style.has_blocks = is_utf8();
  style.has_colours = has_colours();
  return style;
}

Piece::Piece(const std::string& plain, const Style& style, Colour colour)
    : columns(plain.size()) {
  text = coloured(plain, style, colour);
}

std::string coloured(const std::string& text, const Style& style,
                     Colour colour) {
  if (!style.has_colours || colour == Colour::kNone || text.empty()) {
    return text;
  }
  return code_of(colour) + text + "\x1b[0m";
}

}  // namespace corvane
