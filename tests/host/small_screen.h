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

  // UTF-8 with carriage returns, line feeds, ESC [ J, and the four colours.
  // Fails the test at anything else.
  void Write(const std::string& text);
  // What stands is wrapped anew.
  void Resize(int columns);

  // What stands, without blanks at the ends of lines. A colour that is shown
  // is <r>, <y> or <g> in front of what has it, and <n> where none begins.
  std::string Text() const;
  // The same of the line that the cursor is in, wrapped or not.
  std::string CursorLine() const;
  bool has_colour_left() const { return !colour_.empty(); }
  // The columns of the longest line that ever stood.
  size_t widest() const { return widest_; }

 private:
  struct Cell {
    std::string character = " ";
    std::string colour;
  };
  using Line = std::vector<Cell>;  // as it was written; wrapped when shown

  void Put(const std::string& character);
  size_t Escape(const std::string& text, size_t at);
  void SetColour(const std::string& code);
  std::string Shown(const Cell* begin, const Cell* end) const;

  size_t columns_;
  const Colours colours_;
  std::vector<Line> lines_ = {{}};
  size_t at_ = 0;  // in the last line
  std::string colour_;
  size_t widest_ = 0;
};

}  // namespace corvane_test

#endif  // CORVANE_TESTS_HOST_SMALL_SCREEN_H_
