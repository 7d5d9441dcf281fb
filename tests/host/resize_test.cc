// A terminal that somebody makes narrower and wider while a take runs.
#include "host/record_fixture.h"
#include "host/small_screen.h"
#include "host/terminal_session.h"
#include "support/pcm.h"

namespace corvane_test {
namespace {

const std::string kEraseAll = "\r\x1b[J";

size_t WidthOf(const std::string& text) {
  SmallScreen screen(1000);
  screen.Write(text);
  return screen.widest();
}

// What was written between one erasing of the live line and the next.
Words WrittenBetween(const std::string& shown) {
  Words pieces;
  size_t from = 0;
  while (from != std::string::npos) {
    const size_t to = shown.find(kEraseAll, from);
    pieces.push_back(shown.substr(from, to - from));
    from = to == std::string::npos ? to : to + kEraseAll.size();
  }
  return pieces;
}

bool IsLive(const std::string& piece) {
  return piece.size() > 1 && piece.back() == '\r' &&
         piece.find('\n') == std::string::npos;
}

class ResizeTest : public ProgramTest {
 protected:
  ResizeTest() {
    setup_.columns = 120;
    setup_.environment["LC_ALL"] = "C.UTF-8";
    session_ = std::make_unique<TerminalSession>(
        Words{CORVANE_PROGRAM, "record", Path("take.aac"), "-i",
              MakeWav("in.wav", Sine(48000 * 60, 2), 48000, 2), "--realtime"},
        setup_);
  }

  // Waits for a live line that is drawn for a terminal of `columns`.
  void AwaitLineFor(size_t columns, size_t least) {
    session_->AwaitThat([=](const std::string& shown) {
      const std::string last = WrittenBetween(shown).back();
      return IsLive(last) && WidthOf(last) < columns && WidthOf(last) >= least;
    });
  }

  TerminalSession::Setup setup_;
  std::unique_ptr<TerminalSession> session_;
};

TEST_F(ResizeTest, NothingOfTheWiderLineStaysOnANarrowerScreen) {
  AwaitLineFor(120, 80);
  session_->Resize(40);
  AwaitLineFor(40, 30);
  session_->Resize(20);
  AwaitLineFor(20, 10);
  session_->Resize(80);
  AwaitLineFor(80, 60);
  session_->Type("q");
  EXPECT_EQ(session_->AwaitEnd(), 0);

  // The screen is resized when the program has seen it.
  std::vector<int> widths = {40, 20, 80};
  SmallScreen screen(120);
  Words pieces = WrittenBetween(session_->shown());
  for (const std::string& piece : pieces) {
    const size_t width = WidthOf(piece);
    if (IsLive(piece) && !widths.empty() &&
        (widths.front() < 80 ? width < static_cast<size_t>(widths.front())
                             : width >= 60)) {
      screen.Resize(widths.front());
      widths.erase(widths.begin());
    }
    if (&piece != &pieces.front()) screen.Write(kEraseAll);
    screen.Write(piece);
    if (!IsLive(piece)) continue;
    const std::string text = screen.Text();
    EXPECT_EQ(text.find(" dB"), text.rfind(" dB")) << text;
  }
  EXPECT_EQ(screen.Text().find(" dB"), std::string::npos) << screen.Text();
}

TEST_F(ResizeTest, OneColumnShowsNothingAndComesToNoHarm) {
  AwaitLineFor(120, 80);
  session_->Resize(1);
  session_->AwaitThat([](const std::string& shown) {
    return WrittenBetween(shown).back().empty();
  });
  session_->Resize(120);
  AwaitLineFor(120, 80);
  session_->Type("q");
  EXPECT_EQ(session_->AwaitEnd(), 0);
}

}  // namespace
}  // namespace corvane_test
