#include "host/small_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace corvane_test {
namespace {

size_t bytes_of_character(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0x80) return 1;
  if (byte < 0xe0) return 2;
  return byte < 0xf0 ? 3 : 4;
}

}  // namespace

SmallScreen::SmallScreen(int columns, Colours colours)
    : columns_(static_cast<size_t>(std::max(columns, 1))), colours_(colours) {}

void SmallScreen::Write(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    if (text[at] == '\x1b') {
      at = Escape(text, at);
      continue;
    }
    const size_t size = bytes_of_character(text[at]);
    if (text[at] == '\r') {
      at_ -= at_ % columns_;
    } else if (text[at] == '\n') {
      lines_.emplace_back();
      at_ = 0;
    } else {
      Put(text.substr(at, size));
    }
    at += size;
  }
}

void SmallScreen::Put(const std::string& character) {
  Line& line = lines_.back();
  if (line.size() <= at_) line.resize(at_ + 1);
  line[at_] = {character, colour_};
  widest_ = std::max(widest_, ++at_);
}

size_t SmallScreen::Escape(const std::string& text, size_t at) {
  const size_t end = text.find_first_of("Jm", at);
  if (text.compare(at, 2, "\x1b[") != 0 || end == std::string::npos) {
    ADD_FAILURE() << "no sequence of ours: " << text.substr(at);
    return text.size();
  }
  const std::string code = text.substr(at + 2, end - at - 2);
  if (text[end] == 'm') {
    SetColour(code);
  } else {
    EXPECT_EQ(code, "");
    lines_.back().resize(std::min(lines_.back().size(), at_));
  }
  return end + 1;
}

void SmallScreen::SetColour(const std::string& code) {
  static const std::map<std::string, std::string> colours = {
      {"0", ""}, {"31", "r"}, {"32", "g"}, {"33", "y"}};
  const auto found = colours.find(code);
  if (found == colours.end()) {
    ADD_FAILURE() << "no colour of ours: " << code;
    return;
  }
  colour_ = found->second;
}

void SmallScreen::Resize(int columns) {
  columns_ = static_cast<size_t>(std::max(columns, 1));
}

std::string SmallScreen::Text() const {
  std::string text;
  for (const Line& line : lines_) {
    if (&line != &lines_.front()) text += "\n";
    for (size_t at = 0; at < line.size() || at == 0; at += columns_) {
      if (at > 0) text += "\n";
      text += Shown(line.data() + at,
                    line.data() + std::min(at + columns_, line.size()));
    }
  }
  return text;
}

std::string SmallScreen::CursorLine() const {
  const Line& line = lines_.back();
  return Shown(line.data(), line.data() + line.size());
}

std::string SmallScreen::Shown(const Cell* begin, const Cell* end) const {
  std::string shown;
  std::string colour;
  for (const Cell* cell = begin; cell < end; ++cell) {
    if (colours_ == Colours::kShown && cell->colour != colour) {
      colour = cell->colour;
      shown += "<" + (colour.empty() ? "n" : colour) + ">";
    }
    shown += cell->character;
  }
  shown.erase(shown.find_last_not_of(' ') + 1);
  return shown;
}

}  // namespace corvane_test
