// A terminal that understands what the program writes to one, and no more.
#ifndef CORVANE_TESTS_HOST_SMALL_SCREEN_H_
#define CORVANE_TESTS_HOST_SMALL_SCREEN_H_

#include <string>
#include <vector>

namespace corvane_test {

class SmallScreen {
 public:
  enum class Colours { kHidden, kShown };

  explicit SmallScreen(int columns, Colours colours = Colours::kHidden);

  // UTF-8 with carriage returns, line feeds, ESC [ K, and the four colours.
  // Fails the test at anything else.
  void Write(const std::string& text);
  // What stands is wrapped anew, as a terminal does it.
  void Resize(int columns);

  // What stands, without blanks at the ends of lines. A colour that is shown
  // is a letter in front of what has it: r, y, g; and n for none behind it.
  std::string Text() const;
  bool has_colour_left() const { return !colour_.empty(); }
  // The columns of the longest line that ever stood.
  size_t widest() const { return widest_; }
  // Whether a line ever was too long for its place.
  bool has_wrapped() const { return has_wrapped_; }

 private:
  struct Cell {
    std::string character = " ";
    std::string colour;
  };
  using Line = std::vector<Cell>;

  void Put(const std::string& character);
  size_t Escape(const std::string& text, size_t at);
  void SetColour(const std::string& code);

  size_t columns_;
  const Colours colours_;
  std::vector<Line> lines_ = {{}};
  size_t column_ = 0;
  std::string colour_;
  size_t widest_ = 0;
  bool has_wrapped_ = false;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SMALL_SCREEN_H_
