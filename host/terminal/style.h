// What a terminal can show beside plain text.
#ifndef CORVANE_HOST_TERMINAL_STYLE_H_
#define CORVANE_HOST_TERMINAL_STYLE_H_

#include <cstddef>
#include <string>

namespace corvane {

struct Style {
  bool has_blocks = false;   // the block elements of Unicode, as UTF-8
  bool has_colours = false;  // those of ANSI
};

// What the environment says: the locale's character set; TERM and NO_COLOR.
Style style_of_environment();

enum class Colour { kNone, kGreen, kYellow, kRed };

// A piece of a line, and the columns that it takes, which are fewer than its
// bytes.
struct Piece {
  Piece() = default;
  // Plain ASCII in one colour.
  Piece(const std::string& plain, const Style& style,
        Colour colour = Colour::kNone);

  std::string text;
  size_t columns = 0;
};

// `text` in `colour` where the terminal has it, and back to none behind it.
std::string coloured(const std::string& text, const Style& style,
                     Colour colour);

}  // namespace corvane

#endif  // CORVANE_HOST_TERMINAL_STYLE_H_
