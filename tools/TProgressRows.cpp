// SPDX-License-Identifier: MIT
// Rows at the bottom of a terminal.
#include "tools/TProgressRows.h"

#include <cstdlib>
#include <sys/ioctl.h>
#include <utility>

namespace vxtool {

namespace {

// Columns or rows of a terminal; by the environment where it does not know them itself. 0: not known.
std::size_t TerminalSide(std::FILE* terminal, unsigned short winsize::*side, const char* variable)
{
  winsize size = {};
  if (ioctl(fileno(terminal), TIOCGWINSZ, &size) == 0 && size.*side > 0) return size.*side;
  const char* const text = secure_getenv(variable);
  return text ? std::strtoul(text, nullptr, 10) : 0;
}

// Rows that have left the screen at its top cannot be rewritten.
bool HasRoom(std::FILE* terminal, std::size_t rows)
{
  const std::size_t height = TerminalSide(terminal, &winsize::ws_row, "LINES");
  return height == 0 || rows < height;
}

} // namespace

std::string FittingText(std::FILE* terminal, const std::string& text)
{
  // A text that fills the last column would begin another line.
  const std::size_t width = TerminalSide(terminal, &winsize::ws_col, "COLUMNS");
  return width > 0 ? text.substr(0, width - 1) : text;
}

TProgressRows::TProgressRows(std::FILE* stream, bool isTerminal, std::vector<std::string> names)
    : stream_(stream),
      isTerminal_(isTerminal && HasRoom(stream, names.size())),
      names_(std::move(names)),
      texts_(names_.size())
{
}

void TProgressRows::Show(std::size_t row, const std::string& text)
{
  const std::lock_guard<std::mutex> lock(mutex_);
  texts_[row] = text;
  if (!isTerminal_) {
    std::fprintf(stream_, "%s: %s\n", names_[row].c_str(), text.c_str());
    std::fflush(stream_);
    return;
  }
  GoToFirst();
  Draw();
}

void TProgressRows::Remove(std::size_t row)
{
  const std::lock_guard<std::mutex> lock(mutex_);
  if (texts_[row].empty() || !isTerminal_) return;
  texts_[row].clear();
  Erase();
  Draw();
}

bool TProgressRows::Write(std::FILE* stream, const std::string& text)
{
  const std::lock_guard<std::mutex> lock(mutex_);
  const bool isBelow = drawnRows_ > 0;
  Erase();
  const bool isWritten = std::fputs(text.c_str(), stream) >= 0 && std::fflush(stream) == 0;
  if (isBelow) Draw();
  return isWritten;
}

void TProgressRows::GoToFirst()
{
  if (drawnRows_ > 0) std::fprintf(stream_, "\x1b[%zuA", drawnRows_);
  drawnRows_ = 0;
}

void TProgressRows::Erase()
{
  if (drawnRows_ == 0) return;
  GoToFirst();
  std::fputs("\x1b[J", stream_);
  std::fflush(stream_);
}

void TProgressRows::Draw()
{
  for (std::size_t row = 0; row < names_.size(); ++row) {
    if (texts_[row].empty()) continue;
    std::fprintf(stream_, "%s\x1b[K\n", FittingText(stream_, names_[row] + ": " + texts_[row]).c_str());
    ++drawnRows_;
  }
  std::fflush(stream_);
}

} // namespace vxtool
